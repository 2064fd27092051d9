#include "bandconverter.h"

#include <algorithm>

namespace
{

// What the filters of the chroma rows look at around a row, and more.
const int ContextRows = 8;
// No pixel format shares chroma between more rows.
const int TopAlignment = 4;
// Heights are rounded so that a few scalers serve all subtitles.
const int RowsAlignment = 32;

using Planes = std::array<uint8_t *, AV_NUM_DATA_POINTERS>;

Planes PlanesFrom(const AVFrame &frame, int nTop)
{
    const AVPixFmtDescriptor *pDescriptor = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    Planes listPlanes{};
    for (int n = 0; n < pDescriptor->nb_components; ++n) {
        const int nPlane = pDescriptor->comp[n].plane;
        const int nShift = n == 1 || n == 2 ? pDescriptor->log2_chroma_h : 0;
        listPlanes[nPlane] = frame.data[nPlane] + static_cast<ptrdiff_t>(nTop >> nShift) * frame.linesize[nPlane];
    }
    return listPlanes;
}

} // namespace

void BandConverter::SetFormat(const PictureFormat &format)
{
    if (format == m_format)
        return;
    m_format = format;
    m_listScalers.clear();
}

Band BandConverter::BandAround(int nTop, int nBottom) const
{
    Band band;
    band.nTop = std::max(0, nTop - ContextRows) / TopAlignment * TopAlignment;
    const int nWanted = std::min(nBottom + ContextRows, m_format.nHeight) - band.nTop;
    const int nRows = (nWanted + RowsAlignment - 1) / RowsAlignment * RowsAlignment;
    band.nBottom = std::min(band.nTop + nRows, m_format.nHeight);
    return band;
}

BandConverter::Scalers &BandConverter::ScalersFor(int nRows)
{
    Scalers &scalers = m_listScalers[nRows];
    if (!scalers.pToRgb) {
        const PictureFormat video = m_format.WithHeight(nRows);
        scalers.pToRgb = MakeScaler(video, video.AsRgb24());
        scalers.pFromRgb = MakeScaler(video.AsRgb24(), video);
    }
    return scalers;
}

void BandConverter::Convert(SwsContext *pScaler, const AVFrame &from, const Band &band, AVFrame &to) const
{
    const Planes listFrom = PlanesFrom(from, band.nTop);
    const Planes listTo = PlanesFrom(to, band.nTop);
    sws_scale(pScaler, listFrom.data(), from.linesize, 0, band.Rows(), listTo.data(), to.linesize);
}

void BandConverter::ToRgb(const AVFrame &video, const Band &band, AVFrame &rgb)
{
    Convert(ScalersFor(band.Rows()).pToRgb.get(), video, band, rgb);
}

void BandConverter::FromRgb(const AVFrame &rgb, const Band &band, AVFrame &video)
{
    Convert(ScalersFor(band.Rows()).pFromRgb.get(), rgb, band, video);
}
