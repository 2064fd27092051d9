#include "api/libsubtitle.h"

#include "api/guarded.h"
#include "render/videosubtitle.h"

#include <QtGlobal>

#include <memory>

static_assert(
    Q_BYTE_ORDER == Q_LITTLE_ENDIAN,
    "The library is for little-endian processors: it takes Qt's 32-bit pixels for the bytes blue, green, red, alpha");

namespace
{

/** Calls @p call with the renderer behind a handle; -1 if the handle is null or the call throws. */
template <typename Call>
int OnRenderer(void *handle, Call call)
{
    return handle ? Guarded(-1, [&] { return call(*static_cast<VideoSubtitle *>(handle)); }) : -1;
}

/** Hosts may pass wider values; the low 8 bits count. */
uchar LowByte(int value)
{
    return static_cast<uchar>(value & 0xFF);
}

} // namespace

void *CreateVideoSubtitle(int width, int height)
{
    return Guarded(static_cast<void *>(nullptr), [&]() -> void * {
        auto renderer = std::make_unique<VideoSubtitle>();
        renderer->CreateVideoSubtitle(width, height);
        return renderer.release();
    });
}

void DestroyVideoSubtitle(void *handle)
{
    delete static_cast<VideoSubtitle *>(handle);
}

int SetSubtitleTimeStamp(void *handle, long ms)
{
    return OnRenderer(handle, [&](VideoSubtitle &renderer) { return renderer.SetTimeStamp(ms); });
}

int SetSubtitleFile(void *handle, const char *path, int track)
{
    return OnRenderer(handle, [&](VideoSubtitle &renderer) { return renderer.SetSubtitleFile(path, track); });
}

int SetSubtitleAlpah(void *handle, int alpha)
{
    return OnRenderer(handle, [&](VideoSubtitle &renderer) { return renderer.SetAlpah(LowByte(alpha)); });
}

int SetSubtitlePos(void *handle, int percent)
{
    return OnRenderer(handle, [&](VideoSubtitle &renderer) { return renderer.SetLogoPos(percent); });
}

int SetSubtitleFontParam(void *handle, const char *family, int pointSize, int style)
{
    return OnRenderer(handle, [&](VideoSubtitle &renderer) { return renderer.SetFontParam(family, pointSize, style); });
}

int SetSubtitleFontColor(void *handle, int r, int g, int b)
{
    return OnRenderer(
        handle, [&](VideoSubtitle &renderer) { return renderer.SetSubFontColor(LowByte(r), LowByte(g), LowByte(b)); });
}

int SetSubtitleOutlineColor(void *handle, int r, int g, int b)
{
    return OnRenderer(handle, [&](VideoSubtitle &renderer) {
        return renderer.SetSubOutlineColor(1, LowByte(r), LowByte(g), LowByte(b));
    });
}

int ProcessSubtitleFrame(void *handle, AVPicture *frame)
{
    return OnRenderer(handle, [&](VideoSubtitle &renderer) { return renderer.ProcessFrame(frame); });
}

int TextToBmp(void *handle, const char *text, AVPicture *out, int *rect)
{
    return OnRenderer(handle, [&](VideoSubtitle &renderer) { return renderer.TextToBmp(text, out, rect); });
}
