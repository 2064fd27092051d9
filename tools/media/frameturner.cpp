#include "media/frameturner.h"

#include "media/pictureformat.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <cstring>

namespace
{

template <size_t Bytes>
void TurnPlane(const uint8_t *pFrom, ptrdiff_t nStride, int nWidth, int nHeight, uint8_t *pTo, Orientation::Walk walk)
{
    pTo += walk.nOrigin;
    for (int y = 0; y < nHeight; ++y, pFrom += nStride, pTo += walk.nStepY) {
        for (int x = 0; x < nWidth; ++x)
            std::memcpy(pTo + x * walk.nStepX, pFrom + x * Bytes, Bytes);
    }
}

using PlaneTurner = decltype(&TurnPlane<1>);

/** Indexed by bytes per pixel; null for sizes that no format has. */
const std::array<PlaneTurner, 17> Turners = {
    nullptr, TurnPlane<1>, TurnPlane<2>, TurnPlane<3>,  TurnPlane<4>, nullptr, TurnPlane<6>, nullptr,      TurnPlane<8>,
    nullptr, nullptr,      nullptr,      TurnPlane<12>, nullptr,      nullptr, nullptr,      TurnPlane<16>};

} // namespace

bool FrameTurner::Takes(AVPixelFormat format)
{
    const AVPixFmtDescriptor &descriptor = *av_pix_fmt_desc_get(format);
    const auto IsWhole = [&](const AVComponentDescriptor &component) {
        const int nBytes = GroupBytes(descriptor, component.plane);
        return component.step == nBytes && nBytes < static_cast<int>(Turners.size()) && Turners[nBytes];
    };
    return descriptor.log2_chroma_w == descriptor.log2_chroma_h &&
           std::all_of(descriptor.comp, descriptor.comp + descriptor.nb_components, IsWhole);
}

void FrameTurner::Turn(FramePtr &pFrame)
{
    const AVFrame &stored = *pFrame;
    const auto format = static_cast<AVPixelFormat>(stored.format);
    const AVPixFmtDescriptor &descriptor = *av_pix_fmt_desc_get(format);
    FramePtr pShown = m_pool.Get(m_orientation.ShownWidth(stored.width, stored.height),
                                 m_orientation.ShownHeight(stored.width, stored.height), format);
    if (av_frame_copy_props(pShown.get(), &stored) < 0)
        throw std::bad_alloc();
    // An encoder that stores it would have players turn the picture again.
    av_frame_remove_side_data(pShown.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    pShown->sample_aspect_ratio = m_orientation.ShownAspect(stored.sample_aspect_ratio);
    for (int nPlane = 0; nPlane < av_pix_fmt_count_planes(format); ++nPlane) {
        const bool bChroma = nPlane == 1 || nPlane == 2;
        const int nPlaneWidth = AV_CEIL_RSHIFT(stored.width, bChroma ? descriptor.log2_chroma_w : 0);
        const int nPlaneHeight = AV_CEIL_RSHIFT(stored.height, bChroma ? descriptor.log2_chroma_h : 0);
        const int nBytes = GroupBytes(descriptor, nPlane);
        Turners[nBytes](stored.data[nPlane], stored.linesize[nPlane], nPlaneWidth, nPlaneHeight, pShown->data[nPlane],
                        m_orientation.WalkShown(nPlaneWidth, nPlaneHeight, pShown->linesize[nPlane], nBytes));
    }
    pFrame = std::move(pShown);
}
