#include "media/frameburner.h"

extern "C" {
#include <libavutil/imgutils.h>
}

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace
{

void Scale(SwsContext &scaler, const AVFrame &from, AVFrame &to)
{
    sws_scale(&scaler, from.data, from.linesize, 0, from.height, to.data, to.linesize);
}

/** Copies to a frame the pixels in which two others of its format differ, from the second. */
void CopyChanged(const AVFrame &before, const AVFrame &after, AVFrame &to)
{
    const auto format = static_cast<AVPixelFormat>(to.format);
    const AVPixFmtDescriptor &descriptor = *av_pix_fmt_desc_get(format);
    for (int nPlane = 0; nPlane < av_pix_fmt_count_planes(format); ++nPlane) {
        const int nGroup = GroupBytes(descriptor, nPlane);
        const int nBytes = av_image_get_linesize(format, to.width, nPlane);
        const int nShift = nPlane == 1 || nPlane == 2 ? descriptor.log2_chroma_h : 0;
        for (int y = 0; y < AV_CEIL_RSHIFT(to.height, nShift); ++y) {
            const uint8_t *pBefore = before.data[nPlane] + static_cast<ptrdiff_t>(y) * before.linesize[nPlane];
            const uint8_t *pAfter = after.data[nPlane] + static_cast<ptrdiff_t>(y) * after.linesize[nPlane];
            uint8_t *pTo = to.data[nPlane] + static_cast<ptrdiff_t>(y) * to.linesize[nPlane];
            for (int x = 0; x < nBytes; x += nGroup) {
                if (std::memcmp(pBefore + x, pAfter + x, nGroup) != 0)
                    std::memcpy(pTo + x, pAfter + x, nGroup);
            }
        }
    }
}

} // namespace

FrameBurner::FrameBurner(SubtitleStack &subtitles, const Orientation &orientation) :
    m_subtitles(subtitles), m_orientation(orientation)
{
}

Due FrameBurner::Burn(FramePtr &pFrame, long nMilliseconds)
{
    const Due due = m_subtitles.Seek(nMilliseconds);
    if (due != Due::Shown)
        return due;
    m_orientation.SetOn(*pFrame);
    m_pool.MakeWritable(pFrame);
    if (!m_subtitles.Draw(*pFrame))
        BurnConverted(*pFrame);
    return due;
}

/**
 * A blank frame with the properties of another, in the nearest format that the library knows. Its range, matrix and
 * chroma location are never unspecified.
 */
FramePtr FrameBurner::Known(const AVFrame &frame) const
{
    const PictureFormat format = PictureFormat::Of(frame);
    std::vector<AVPixelFormat> listFormats = m_subtitles.Formats();
    listFormats.push_back(AV_PIX_FMT_NONE);
    FramePtr pKnown = FramePool().Get(frame.width, frame.height,
                                      avcodec_find_best_pix_fmt_of_list(listFormats.data(), format.format, 1, nullptr));
    if (av_frame_copy_props(pKnown.get(), &frame) < 0)
        throw std::bad_alloc();
    pKnown->color_range = format.bFullRange ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    pKnown->chroma_location = format.chroma;
    pKnown->colorspace = PictureFormat::Of(*pKnown).matrix;
    return pKnown;
}

/**
 * Draws into a converted copy. Converts it back both with and without the subtitle and takes over only the differences,
 * so that the conversion itself changes nothing.
 */
void FrameBurner::BurnConverted(AVFrame &frame)
{
    FramePtr pPlain = Known(frame);
    const PictureFormat format = PictureFormat::Of(frame);
    if (!m_pToKnown || !(format == m_format)) {
        m_pToKnown = MakeScaler(format, PictureFormat::Of(*pPlain));
        // Bilinear, so that a subtitle affects no chroma samples beyond the ones next to it.
        m_pFromKnown = MakeScaler(PictureFormat::Of(*pPlain), format, SWS_BILINEAR);
        m_format = format;
    }
    Scale(*m_pToKnown, frame, *pPlain);
    FramePtr pBurnt = Checked(FramePtr(av_frame_clone(pPlain.get())));
    FramePool().MakeWritable(pBurnt);
    if (!m_subtitles.Draw(*pBurnt)) {
        // The library refuses HDR frames with primaries that it does not know.
        pBurnt->color_primaries = AVCOL_PRI_UNSPECIFIED;
        if (!m_subtitles.Draw(*pBurnt))
            throw std::runtime_error(std::string("subtitles cannot be drawn into pictures of the format ") +
                                     av_get_pix_fmt_name(format.format));
    }
    FramePtr pBefore = FramePool().Get(frame.width, frame.height, format.format);
    FramePtr pAfter = FramePool().Get(frame.width, frame.height, format.format);
    Scale(*m_pFromKnown, *pPlain, *pBefore);
    Scale(*m_pFromKnown, *pBurnt, *pAfter);
    CopyChanged(*pBefore, *pAfter, frame);
}
