#include "frames/pixelformat.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>

namespace
{

constexpr AVPixelFormat Known[] = {
    AV_PIX_FMT_YUV420P,   AV_PIX_FMT_YUV422P,   AV_PIX_FMT_YUV444P,   AV_PIX_FMT_YUVJ420P,  AV_PIX_FMT_YUVJ422P,
    AV_PIX_FMT_YUVJ444P,  AV_PIX_FMT_YUVA420P,  AV_PIX_FMT_YUVA422P,  AV_PIX_FMT_YUVA444P,  AV_PIX_FMT_NV12,
    AV_PIX_FMT_NV21,      AV_PIX_FMT_NV16,      AV_PIX_FMT_YUYV422,   AV_PIX_FMT_UYVY422,   AV_PIX_FMT_YUV420P10,
    AV_PIX_FMT_YUV422P10, AV_PIX_FMT_YUV444P10, AV_PIX_FMT_YUV420P12, AV_PIX_FMT_YUV422P12, AV_PIX_FMT_YUV444P12,
    AV_PIX_FMT_P010,      AV_PIX_FMT_GRAY8,     AV_PIX_FMT_GRAY10,    AV_PIX_FMT_GBRP,      AV_PIX_FMT_GBRP10,
    AV_PIX_FMT_RGB24,     AV_PIX_FMT_BGR24,     AV_PIX_FMT_RGBA,      AV_PIX_FMT_BGRA,      AV_PIX_FMT_ARGB,
    AV_PIX_FMT_ABGR,      AV_PIX_FMT_RGB0,      AV_PIX_FMT_BGR0,      AV_PIX_FMT_0RGB,      AV_PIX_FMT_0BGR,
    AV_PIX_FMT_RGB48,     AV_PIX_FMT_X2RGB10,
};

ColorModel ModelOf(const AVPixFmtDescriptor &description)
{
    if (description.flags & AV_PIX_FMT_FLAG_RGB)
        return ColorModel::Rgb;
    return description.nb_components < 3 ? ColorModel::Grey : ColorModel::Yuv;
}

} // namespace

std::ptrdiff_t PixelFormat::RowBytes(int plane, int width) const
{
    std::ptrdiff_t elements = 0;
    ForComponents(plane, [&](int, const Component &component) {
        const std::ptrdiff_t samples =
            (width + (std::ptrdiff_t{1} << component.nColumnsLog2) - 1) >> component.nColumnsLog2;
        elements = std::max(elements, samples * component.nStep);
    });
    return elements * nElementBytes;
}

bool FindPixelFormat(int number, PixelFormat &format)
{
    const auto *known = std::find(std::begin(Known), std::end(Known), number);
    const AVPixFmtDescriptor *description = known != std::end(Known) ? av_pix_fmt_desc_get(*known) : nullptr;
    if (!description)
        return false;
    format = {};
    format.model = ModelOf(*description);
    format.bJpeg = *known == AV_PIX_FMT_YUVJ420P || *known == AV_PIX_FMT_YUVJ422P || *known == AV_PIX_FMT_YUVJ444P;
    format.bAlpha = description->flags & AV_PIX_FMT_FLAG_ALPHA;
    format.nColors = description->nb_components - (format.bAlpha ? 1 : 0);
    const AVComponentDescriptor &first = description->comp[0];
    format.nElementBytes = *known == AV_PIX_FMT_X2RGB10 ? 4 : first.depth + first.shift > 8 ? 2 : 1;
    format.nPlanes = av_pix_fmt_count_planes(*known);
    for (int i = 0; i < description->nb_components; ++i) {
        const AVComponentDescriptor &from = description->comp[i];
        const bool isChroma = format.model == ColorModel::Yuv && (i == 1 || i == 2);
        const int bitsBefore = 8 * (from.offset % format.nElementBytes);
        format.components[i] = {from.plane,
                                from.offset / format.nElementBytes,
                                from.step / format.nElementBytes,
                                from.shift + bitsBefore,
                                from.depth,
                                isChroma ? description->log2_chroma_w : 0,
                                isChroma ? description->log2_chroma_h : 0};
    }
    return true;
}
