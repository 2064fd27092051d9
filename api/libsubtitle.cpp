#include "api/libsubtitle.h"

#include "render/videosubtitle.h"

namespace
{

VideoSubtitle *Renderer(void *handle)
{
    return static_cast<VideoSubtitle *>(handle);
}

/** Hosts may pass wider values; the low 8 bits count. */
uchar LowByte(int value)
{
    return static_cast<uchar>(value & 0xFF);
}

} // namespace

void *CreateVideoSubtitle(int width, int height)
{
    auto *renderer = new VideoSubtitle;
    renderer->CreateVideoSubtitle(width, height);
    return renderer;
}

void DestroyVideoSubtitle(void *handle)
{
    delete Renderer(handle);
}

int SetSubtitleTimeStamp(void *handle, long ms)
{
    return Renderer(handle)->SetTimeStamp(ms);
}

int SetSubtitleFile(void *handle, const char *path, int track)
{
    return Renderer(handle)->SetSubtitleFile(path, track);
}

int SetSubtitleAlpah(void *handle, int alpha)
{
    return Renderer(handle)->SetAlpah(LowByte(alpha));
}

int SetSubtitlePos(void *handle, int percent)
{
    return Renderer(handle)->SetLogoPos(percent);
}

int SetSubtitleFontParam(void *handle, const char *family, int pointSize, int style)
{
    return Renderer(handle)->SetFontParam(family, pointSize, style);
}

int SetSubtitleFontColor(void *handle, int r, int g, int b)
{
    return Renderer(handle)->SetSubFontColor(LowByte(r), LowByte(g), LowByte(b));
}

int SetSubtitleOutlineColor(void *handle, int r, int g, int b)
{
    return Renderer(handle)->SetSubOutlineColor(1, LowByte(r), LowByte(g), LowByte(b));
}

int ProcessSubtitleFrame(void *handle, AVPicture *frame)
{
    return Renderer(handle)->ProcessFrame(frame);
}

int TextToBmp(void *handle, const char *text, AVPicture *out, int *rect)
{
    return Renderer(handle)->TextToBmp(text, out, rect);
}
