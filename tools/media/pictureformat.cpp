#include "media/pictureformat.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <algorithm>
#include <stdexcept>
#include <tuple>

namespace
{

/** Whether both libsubtitleframe and swscale know a matrix; others count as unspecified. */
bool IsKnown(AVColorSpace matrix)
{
    return matrix == AVCOL_SPC_FCC || matrix == AVCOL_SPC_BT470BG || matrix == AVCOL_SPC_SMPTE170M ||
           matrix == AVCOL_SPC_SMPTE240M || matrix == AVCOL_SPC_BT709 || matrix == AVCOL_SPC_BT2020_NCL;
}

/** The matrix that libsubtitleframe assumes if it is unspecified. */
AVColorSpace UsualMatrix(const AVFrame &frame)
{
    return frame.width >= 1280 || frame.height > 576 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

/** Sets the position of the chroma samples, in 1/256 of the distance between two luma samples. */
void SetChromaPosition(SwsContext *pContext, const PictureFormat &picture, bool bSource)
{
    const AVPixFmtDescriptor *pDescriptor = av_pix_fmt_desc_get(picture.format);
    if (IsRgb(picture.format) || pDescriptor->nb_components < 3)
        return;
    const AVChromaLocation chroma = picture.chroma;
    const bool bCentreX = chroma == AVCHROMA_LOC_CENTER || chroma == AVCHROMA_LOC_TOP || chroma == AVCHROMA_LOC_BOTTOM;
    const bool bTop = chroma == AVCHROMA_LOC_TOPLEFT || chroma == AVCHROMA_LOC_TOP;
    const bool bBottom = chroma == AVCHROMA_LOC_BOTTOMLEFT || chroma == AVCHROMA_LOC_BOTTOM;
    if (pDescriptor->log2_chroma_w > 0)
        av_opt_set_int(pContext, bSource ? "src_h_chr_pos" : "dst_h_chr_pos", bCentreX ? 128 : 0, 0);
    if (pDescriptor->log2_chroma_h > 0)
        av_opt_set_int(pContext, bSource ? "src_v_chr_pos" : "dst_v_chr_pos", bTop ? 0 : (bBottom ? 256 : 128), 0);
}

} // namespace

bool IsRgb(AVPixelFormat format)
{
    const AVPixFmtDescriptor *pDescriptor = av_pix_fmt_desc_get(format);
    return pDescriptor && (pDescriptor->flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

bool HasAlpha(AVPixelFormat format)
{
    const AVPixFmtDescriptor *pDescriptor = av_pix_fmt_desc_get(format);
    return pDescriptor && (pDescriptor->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
}

int GroupBytes(const AVPixFmtDescriptor &descriptor, int nPlane)
{
    int nBytes = 1;
    for (int n = 0; n < descriptor.nb_components; ++n) {
        if (descriptor.comp[n].plane == nPlane)
            nBytes = std::max(nBytes, descriptor.comp[n].step);
    }
    return nBytes;
}

bool IsFullRangeFormat(AVPixelFormat format)
{
    return format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVJ422P || format == AV_PIX_FMT_YUVJ444P ||
           format == AV_PIX_FMT_YUVJ440P || format == AV_PIX_FMT_YUVJ411P;
}

bool IsBurnable(AVPixelFormat format)
{
    const uint64_t nUnfit =
        AV_PIX_FMT_FLAG_BITSTREAM | AV_PIX_FMT_FLAG_PAL | AV_PIX_FMT_FLAG_HWACCEL | AV_PIX_FMT_FLAG_BAYER;
    const AVPixFmtDescriptor *pDescriptor = av_pix_fmt_desc_get(format);
    return pDescriptor && (pDescriptor->flags & nUnfit) == 0 && sws_isSupportedInput(format) > 0 &&
           sws_isSupportedOutput(format) > 0;
}

PictureFormat PictureFormat::Of(const AVFrame &frame)
{
    PictureFormat picture;
    picture.nWidth = frame.width;
    picture.nHeight = frame.height;
    picture.format = static_cast<AVPixelFormat>(frame.format);
    // Constant luminance has the same coefficients as BT2020_NCL, which both libraries know.
    picture.matrix = frame.colorspace == AVCOL_SPC_BT2020_CL ? AVCOL_SPC_BT2020_NCL : frame.colorspace;
    if (!IsRgb(picture.format) && !IsKnown(picture.matrix))
        picture.matrix = UsualMatrix(frame);
    picture.chroma = frame.chroma_location == AVCHROMA_LOC_UNSPECIFIED ? AVCHROMA_LOC_LEFT : frame.chroma_location;
    picture.bFullRange =
        frame.color_range == AVCOL_RANGE_JPEG || IsFullRangeFormat(picture.format) || IsRgb(picture.format);
    return picture;
}

bool PictureFormat::operator==(const PictureFormat &other) const
{
    const auto Key = [](const PictureFormat &p) {
        return std::make_tuple(p.nWidth, p.nHeight, p.format, p.matrix, p.chroma, p.bFullRange);
    };
    return Key(*this) == Key(other);
}

ScalerPtr MakeScaler(const PictureFormat &from, const PictureFormat &to, int nFilter)
{
    ScalerPtr pContext = Checked(ScalerPtr(sws_alloc_context()));
    av_opt_set_int(pContext.get(), "srcw", from.nWidth, 0);
    av_opt_set_int(pContext.get(), "srch", from.nHeight, 0);
    av_opt_set_int(pContext.get(), "src_format", from.format, 0);
    av_opt_set_int(pContext.get(), "dstw", to.nWidth, 0);
    av_opt_set_int(pContext.get(), "dsth", to.nHeight, 0);
    av_opt_set_int(pContext.get(), "dst_format", to.format, 0);
    av_opt_set_int(pContext.get(), "src_range", from.bFullRange ? 1 : 0, 0);
    av_opt_set_int(pContext.get(), "dst_range", to.bFullRange ? 1 : 0, 0);
    av_opt_set_int(pContext.get(), "sws_flags", nFilter | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP,
                   0);
    SetChromaPosition(pContext.get(), from, true);
    SetChromaPosition(pContext.get(), to, false);
    if (sws_init_context(pContext.get(), nullptr, nullptr) < 0)
        throw std::runtime_error(std::string("pictures of the format ") + av_get_pix_fmt_name(from.format) +
                                 " cannot be converted to " + av_get_pix_fmt_name(to.format));
    // If one side is RGB, only the other side's matrix counts, and swscale wants it in both arguments.
    const int nFrom = IsRgb(from.format) ? to.matrix : from.matrix;
    const int nTo = IsRgb(to.format) ? from.matrix : to.matrix;
    sws_setColorspaceDetails(pContext.get(), sws_getCoefficients(nFrom), from.bFullRange ? 1 : 0,
                             sws_getCoefficients(nTo), to.bFullRange ? 1 : 0, 0, 1 << 16, 1 << 16);
    return pContext;
}
