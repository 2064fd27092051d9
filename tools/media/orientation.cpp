#include "media/orientation.h"

#include "media/streamdata.h"

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>

Orientation::Orientation(const int32_t *pMatrix)
{
    if (!pMatrix)
        return;
    // The stored pixel (x, y) is shown at (a * x + c * y, b * x + d * y).
    const int32_t nA = pMatrix[0];
    const int32_t nB = pMatrix[1];
    const int32_t nC = pMatrix[3];
    const int32_t nD = pMatrix[4];
    if (nA != 0 && nD != 0 && nB == 0 && nC == 0) {
        m_bFlipX = nA < 0;
        m_bFlipY = nD < 0;
    } else if (nA == 0 && nD == 0 && nB != 0 && nC != 0) {
        m_bTranspose = true;
        m_bFlipX = nC < 0;
        m_bFlipY = nB < 0;
    } else {
        // Zeros alone come from files that leave the matrix out.
        m_bOther = nA != 0 || nB != 0 || nC != 0 || nD != 0;
    }
    std::copy_n(pMatrix, m_listMatrix.size(), m_listMatrix.begin());
}

Orientation Orientation::Of(const AVStream &stream, const AVFrame &first)
{
    return Orientation(
        reinterpret_cast<const int32_t *>(FindPictureSideData(stream, first, AV_PKT_DATA_DISPLAYMATRIX)));
}

std::string Orientation::OtherAngle() const
{
    const double dCounterclockwise = std::round(av_display_rotation_get(m_listMatrix.data()) * 100) / 100;
    if (!m_bOther || std::isnan(dCounterclockwise))
        return "";
    std::ostringstream text;
    text << std::abs(dCounterclockwise) << " degrees " << (dCounterclockwise > 0 ? "counterclockwise" : "clockwise");
    return text.str();
}

void Orientation::SetOn(AVFrame &frame) const
{
    av_frame_remove_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX);
    if (Alike())
        return;
    const AVFrameSideData &data =
        *Checked(av_frame_new_side_data(&frame, AV_FRAME_DATA_DISPLAYMATRIX, sizeof m_listMatrix));
    std::memcpy(data.data, m_listMatrix.data(), sizeof m_listMatrix);
}

Orientation::Walk Orientation::WalkShown(int nStoredWidth, int nStoredHeight, ptrdiff_t nStride, ptrdiff_t nPixel) const
{
    const int nWidth = ShownWidth(nStoredWidth, nStoredHeight);
    const int nHeight = ShownHeight(nStoredWidth, nStoredHeight);
    const ptrdiff_t nOrigin = (m_bFlipX ? (nWidth - 1) * nPixel : 0) + (m_bFlipY ? (nHeight - 1) * nStride : 0);
    const ptrdiff_t nAlongX = m_bFlipX ? -nPixel : nPixel;
    const ptrdiff_t nAlongY = m_bFlipY ? -nStride : nStride;
    return m_bTranspose ? Walk{nOrigin, nAlongY, nAlongX} : Walk{nOrigin, nAlongX, nAlongY};
}
