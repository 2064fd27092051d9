#include "frames/libsubtitleframe.h"

#include "api/guarded.h"
#include "frames/avframereader.h"
#include "frames/frameburner.h"
#include "frames/pixelformat.h"
#include "render/videosubtitle.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <memory>

int SubtitlePixelFormat(const char *name)
{
    const int number = name ? av_get_pix_fmt(name) : AV_PIX_FMT_NONE;
    PixelFormat format;
    return FindPixelFormat(number, format) ? number : -1;
}

int HasSubtitleTrack(void *handle)
{
    return handle ? Guarded(-1, [&] { return static_cast<VideoSubtitle *>(handle)->HasTrack() ? 1 : 0; }) : -1;
}

void *CreateSubtitleBurner(void *handle)
{
    return Guarded(static_cast<void *>(nullptr), [&]() -> void * {
        return handle ? std::make_unique<FrameBurner>(*static_cast<VideoSubtitle *>(handle)).release() : nullptr;
    });
}

void DestroySubtitleBurner(void *burner)
{
    delete static_cast<FrameBurner *>(burner);
}

int SetSubtitleBurnerWhite(void *burner, double level)
{
    return burner ? static_cast<FrameBurner *>(burner)->SetWhite(level) : -1;
}

int SetSubtitleBurnerLook(void *burner, int look)
{
    return burner ? static_cast<FrameBurner *>(burner)->SetLook(look) : -1;
}

int SetSubtitleBurnerOutline(void *burner, double width)
{
    return burner ? static_cast<FrameBurner *>(burner)->SetOutline(width) : -1;
}

int SetSubtitleBurnerSafeArea(void *burner, double percent)
{
    return burner ? static_cast<FrameBurner *>(burner)->SetSafeArea(percent) : -1;
}

int SetSubtitleBurnerPixelAspect(void *burner, int width, int height)
{
    return burner ? static_cast<FrameBurner *>(burner)->SetPixelAspect(width, height) : -1;
}

int SetSubtitleBurnerTakenRows(void *burner, const SubtitleRows *rows, int count)
{
    return burner ? Guarded(-1, [&] { return static_cast<FrameBurner *>(burner)->SetTakenRows(rows, count); }) : -1;
}

int FindSubtitleRows(void *burner, SubtitleRows *rows)
{
    return burner && rows ? Guarded(-1, [&] { return static_cast<FrameBurner *>(burner)->FindRows(*rows); }) : -1;
}

int IsSubtitleDue(void *burner)
{
    return burner ? Guarded(-1, [&] { return static_cast<FrameBurner *>(burner)->IsDue(); }) : -1;
}

int BurnSubtitle(void *burner, const SubtitleFrame *frame)
{
    return burner && frame ? Guarded(-1, [&] { return static_cast<FrameBurner *>(burner)->Burn(*frame, nullptr); })
                           : -1;
}

int BurnSubtitleAVFrame(void *burner, AVFrame *frame)
{
    if (!burner || !frame)
        return -1;
    return Guarded(-1, [&] {
        AVFrameReader reader(*frame);
        return reader ? static_cast<FrameBurner *>(burner)->Burn(reader.Frame(), &reader) : -1;
    });
}
