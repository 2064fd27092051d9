#include "frameburner.h"

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

/** Copies to a frame of the same format what differs between two others. */
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

FrameBurner::FrameBurner(const SubtitleRenderer &renderer, const Orientation &orientation) :
    m_renderer(renderer), m_orientation(orientation)
{
}

Due FrameBurner::Burn(FramePtr &pFrame, long nMilliseconds)
{
    const Due due = m_renderer.Seek(nMilliseconds);
    if (due != Due::Shown)
        return due;
    m_orientation.SetOn(*pFrame);
    m_pool.MakeWritable(pFrame);
    if (!m_renderer.Draw(*pFrame))
        BurnConverted(*pFrame);
    return due;
}

/** An empty frame for the same picture in the nearest format that the library knows, with nothing left unspecified. */
FramePtr FrameBurner::Known(const AVFrame &frame) const
{
    const PictureFormat format = PictureFormat::Of(frame);
    std::vector<AVPixelFormat> listFormats = m_renderer.Formats();
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

/** What the way to another format and back changes by itself is not taken over. */
void FrameBurner::BurnConverted(AVFrame &frame)
{
    FramePtr pPlain = Known(frame);
    const PictureFormat format = PictureFormat::Of(frame);
    if (!m_pToKnown || !(format == m_format)) {
        m_pToKnown = MakeScaler(format, PictureFormat::Of(*pPlain));
        // A filter that reaches no farther than the chroma samples next to those that the subtitle covers.
        m_pFromKnown = MakeScaler(PictureFormat::Of(*pPlain), format, SWS_BILINEAR);
        m_format = format;
    }
    Scale(*m_pToKnown, frame, *pPlain);
    FramePtr pBurnt = Checked(FramePtr(av_frame_clone(pPlain.get())));
    FramePool().MakeWritable(pBurnt);
    if (!m_renderer.Draw(*pBurnt)) {
        // Of a high dynamic range, with primaries that the library does not know.
        pBurnt->color_primaries = AVCOL_PRI_UNSPECIFIED;
        if (!m_renderer.Draw(*pBurnt))
            throw std::runtime_error(std::string("subtitles cannot be drawn into pictures of the format ") +
                                     av_get_pix_fmt_name(format.format));
    }
    FramePtr pBefore = FramePool().Get(frame.width, frame.height, format.format);
    FramePtr pAfter = FramePool().Get(frame.width, frame.height, format.format);
    Scale(*m_pFromKnown, *pPlain, *pBefore);
    Scale(*m_pFromKnown, *pBurnt, *pAfter);
    CopyChanged(*pBefore, *pAfter, frame);
}
