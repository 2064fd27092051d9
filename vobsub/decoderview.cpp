#include "vobsub/decoderview.h"

#include "vobsub/decoderstate.h"
#include "vobsub/hostsymbol.h"
#include "vobsub/subtitledecoder.h"

#include <algorithm>
#include <iterator>

int32_t Coded_Picture_Width;
int32_t Coded_Picture_Height;
int32_t Chroma_Width;
int32_t Chroma_Height;
int32_t chroma_format;
int32_t Subt_Color;
int32_t Subt_Offset;
subtitle_canvas mediadata;

namespace
{

template <typename Object>
Object &Shown(const char *name, Object &own) noexcept
{
    return *static_cast<Object *>(HostObject(name, &own));
}

struct shown_variables {
    int32_t &coded_width = Shown("Coded_Picture_Width", Coded_Picture_Width);
    int32_t &coded_height = Shown("Coded_Picture_Height", Coded_Picture_Height);
    int32_t &chroma_width = Shown("Chroma_Width", Chroma_Width);
    int32_t &chroma_height = Shown("Chroma_Height", Chroma_Height);
    int32_t &format = Shown("chroma_format", chroma_format);
    int32_t &color = Shown("Subt_Color", Subt_Color);
    int32_t &offset = Shown("Subt_Offset", Subt_Offset);
    subtitle_canvas &canvas = Shown("mediadata", mediadata);
};

// Looked up when the library is loaded, because the lookup takes the dynamic linker's lock.
const shown_variables view;

} // namespace

host_settings Read_Settings()
{
    return {view.color, view.offset, view.format, view.chroma_width};
}

void Reset_Settings()
{
    view.color = 1;
    view.offset = 0;
    view.format = 3;
}

void Set_Colour(int32_t colour)
{
    view.color = colour;
}

void Publish_Canvas()
{
    view.coded_width = view.chroma_width = decoder.width;
    view.coded_height = view.chroma_height = decoder.height;
    std::copy(std::begin(decoder.canvas.plane), std::end(decoder.canvas.plane), view.canvas.plane);
    std::copy(std::begin(decoder.canvas.out), std::end(decoder.canvas.out), view.canvas.out);
}

void Publish_Picture()
{
    subtitle_canvas &canvas = view.canvas;
    canvas.start = decoder.canvas.start;
    canvas.stop = decoder.canvas.stop;
    canvas.top = decoder.canvas.top;
    canvas.bottom = decoder.canvas.bottom;
}
