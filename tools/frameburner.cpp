#include "frameburner.h"

#include <algorithm>
#include <cstring>

namespace
{

const int RgbBytes = 3;

/** How the samples of one plane lie in memory: each group holds all that the plane has for a block of pixels. */
struct PlaneLayout {
    int nGroupBytes = 0;
    int nShiftX = 0;
    int nShiftY = 0;
    // Groups around a changed pixel that the filters of subsampled chroma change with it.
    int nReach = 0;
};

PlaneLayout LayoutOf(const AVPixFmtDescriptor &descriptor, int nPlane)
{
    PlaneLayout layout;
    for (int n = 0; n < descriptor.nb_components; ++n) {
        if (descriptor.comp[n].plane != nPlane)
            continue;
        layout.nGroupBytes = std::max(layout.nGroupBytes, descriptor.comp[n].step);
        if (n == 1 || n == 2) {
            layout.nShiftX = descriptor.log2_chroma_w;
            layout.nShiftY = descriptor.log2_chroma_h;
        }
    }
    layout.nReach = layout.nShiftX + layout.nShiftY > 0 ? 1 : 0;
    return layout;
}

Box GroupsAround(const Box &pixels, const PlaneLayout &layout, const PictureFormat &format)
{
    const int nColumns = AV_CEIL_RSHIFT(format.nWidth, layout.nShiftX);
    const int nRows = AV_CEIL_RSHIFT(format.nHeight, layout.nShiftY);
    return {std::max(0, (pixels.nLeft >> layout.nShiftX) - layout.nReach),
            std::max(0, (pixels.nTop >> layout.nShiftY) - layout.nReach),
            std::min(nColumns, AV_CEIL_RSHIFT(pixels.nRight, layout.nShiftX) + layout.nReach),
            std::min(nRows, AV_CEIL_RSHIFT(pixels.nBottom, layout.nShiftY) + layout.nReach)};
}

} // namespace

FrameBurner::FrameBurner(SubtitleRenderer &renderer, const Orientation &orientation) :
    m_renderer(renderer), m_orientation(orientation)
{
}

void FrameBurner::Prepare(const AVFrame &frame)
{
    const PictureFormat format = PictureFormat::Of(frame);
    if (m_pRgb && format == m_format)
        return;
    m_format = format;
    m_converter.SetFormat(format);
    m_pBurnt = FramePool().Get(frame.width, frame.height, format.format);
    m_pRgb = FramePool().Get(frame.width, frame.height, AV_PIX_FMT_RGB24);
    if (!m_orientation.Alike())
        m_pTurned = FramePool().Get(m_renderer.Width(), m_renderer.Height(), AV_PIX_FMT_RGB24);
}

bool FrameBurner::Burn(FramePtr &pFrame, long nMilliseconds)
{
    if (!m_renderer.Seek(nMilliseconds))
        return false;
    Prepare(*pFrame);
    m_stored = m_orientation.ToStored(m_renderer.Covered(), m_format.nWidth, m_format.nHeight);
    const Band band = m_converter.BandAround(m_stored.nTop, m_stored.nBottom);
    m_converter.ToRgb(*pFrame, band, *m_pRgb);
    if (m_orientation.Alike())
        m_renderer.Draw(m_pRgb->data[0], m_pRgb->linesize[0]);
    else
        DrawTurned();
    m_converter.FromRgb(*m_pRgb, band, *m_pBurnt);
    m_pool.MakeWritable(pFrame);
    CopyBack(*pFrame);
    return true;
}

void FrameBurner::DrawTurned()
{
    const auto walk = m_orientation.WalkShown(m_format.nWidth, m_format.nHeight, m_pTurned->linesize[0], RgbBytes);
    const auto ForEachPixel = [&](auto Copy) {
        for (int y = m_stored.nTop; y < m_stored.nBottom; ++y) {
            uint8_t *pStored = m_pRgb->data[0] + static_cast<ptrdiff_t>(y) * m_pRgb->linesize[0];
            uint8_t *pShown = m_pTurned->data[0] + walk.nOrigin + y * walk.nStepY;
            for (int x = m_stored.nLeft; x < m_stored.nRight; ++x)
                Copy(pStored + static_cast<ptrdiff_t>(x) * RgbBytes, pShown + x * walk.nStepX);
        }
    };
    ForEachPixel([](const uint8_t *pStored, uint8_t *pShown) { std::memcpy(pShown, pStored, RgbBytes); });
    m_renderer.Draw(m_pTurned->data[0], m_pTurned->linesize[0]);
    ForEachPixel([](uint8_t *pStored, const uint8_t *pShown) { std::memcpy(pStored, pShown, RgbBytes); });
}

/** Fills m_listMarks with one byte for each group of samples, not 0 where a covered pixel is within reach. */
void FrameBurner::MarkGroups(const Box &groups, int nShiftX, int nShiftY, int nReach)
{
    const auto walk = m_orientation.WalkShown(m_format.nWidth, m_format.nHeight, m_renderer.Width(), 1);
    const int nColumns = groups.nRight - groups.nLeft;
    m_listMarks.assign(static_cast<size_t>(nColumns) * (groups.nBottom - groups.nTop), 0);
    for (int y = m_stored.nTop; y < m_stored.nBottom; ++y) {
        const uint8_t *pMask = m_renderer.Mask() + walk.nOrigin + y * walk.nStepY;
        const int nFirstRow = std::max((y >> nShiftY) - nReach, groups.nTop);
        const int nLastRow = std::min((y >> nShiftY) + nReach, groups.nBottom - 1);
        for (int x = m_stored.nLeft; x < m_stored.nRight; ++x) {
            if (pMask[x * walk.nStepX] == 0)
                continue;
            const int nFirst = std::max((x >> nShiftX) - nReach, groups.nLeft);
            const int nLast = std::min((x >> nShiftX) + nReach, groups.nRight - 1);
            for (int nRow = nFirstRow; nRow <= nLastRow; ++nRow)
                std::memset(&m_listMarks[static_cast<size_t>(nRow - groups.nTop) * nColumns + nFirst - groups.nLeft], 1,
                            nLast - nFirst + 1);
        }
    }
}

void FrameBurner::CopyBack(AVFrame &video)
{
    const AVPixFmtDescriptor &descriptor = *av_pix_fmt_desc_get(m_format.format);
    for (int nPlane = 0; nPlane < av_pix_fmt_count_planes(m_format.format); ++nPlane) {
        const PlaneLayout layout = LayoutOf(descriptor, nPlane);
        const Box groups = GroupsAround(m_stored, layout, m_format);
        MarkGroups(groups, layout.nShiftX, layout.nShiftY, layout.nReach);
        const uint8_t *pMark = m_listMarks.data();
        for (int y = groups.nTop; y < groups.nBottom; ++y) {
            uint8_t *pTo = video.data[nPlane] + static_cast<ptrdiff_t>(y) * video.linesize[nPlane];
            const uint8_t *pFrom = m_pBurnt->data[nPlane] + static_cast<ptrdiff_t>(y) * m_pBurnt->linesize[nPlane];
            for (int x = groups.nLeft; x < groups.nRight; ++x) {
                const ptrdiff_t nOffset = static_cast<ptrdiff_t>(x) * layout.nGroupBytes;
                if (*pMark++ != 0)
                    std::memcpy(pTo + nOffset, pFrom + nOffset, layout.nGroupBytes);
            }
        }
    }
}
