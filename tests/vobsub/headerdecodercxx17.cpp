// The decoder's header, compiled alone as C++17: the types and layouts that a host in C++ relies on.
#include "vobsub/subtitledecoder.h"

#include <cstddef>
#include <type_traits>

static_assert(std::is_standard_layout_v<subtitle_canvas> && std::is_standard_layout_v<SubtitlePlanes>);
static_assert(offsetof(subtitle_canvas, start) == 18 * sizeof(void *));
static_assert(offsetof(SubtitlePlanes, top) == 7 * sizeof(void *));

static_assert(std::is_same_v<decltype(subtitle_init), int(const unsigned int *, int, int)>);
static_assert(std::is_same_v<decltype(subtitle_release), void()>);
static_assert(std::is_same_v<decltype(subtitle_decode), int(const unsigned char *, int)>);
static_assert(std::is_same_v<decltype(subtitle_write), void(SubtitlePlanes *)>);
static_assert(std::is_same_v<decltype(subtitle_write_x), void(SubtitlePlanes *)>);
static_assert(std::is_same_v<decltype(Get_HalfByte), int()>);
static_assert(std::is_same_v<decltype(Get_Byte), int()>);
static_assert(std::is_same_v<decltype(Get_Short), int()>);
static_assert(std::is_same_v<decltype(Init_RleOutput), void(int, int, int, int, unsigned int, unsigned int)>);
static_assert(std::is_same_v<decltype(New_Line), void()>);
static_assert(std::is_same_v<decltype(Rle_Output), void(unsigned int)>);

static_assert(std::is_same_v<decltype(mediadata), subtitle_canvas>);
static_assert(std::is_same_v<decltype(Coded_Picture_Width), int32_t>);
static_assert(std::is_same_v<decltype(Coded_Picture_Height), int32_t>);
static_assert(std::is_same_v<decltype(Chroma_Width), int32_t>);
static_assert(std::is_same_v<decltype(Chroma_Height), int32_t>);
static_assert(std::is_same_v<decltype(chroma_format), int32_t>);
static_assert(std::is_same_v<decltype(Subt_Color), int32_t>);
static_assert(std::is_same_v<decltype(Subt_Offset), int32_t>);
