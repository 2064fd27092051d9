#include "orientation.h"

#include "streamdata.h"

#include <algorithm>
#include <cstring>

Orientation::Orientation(const int32_t *pMatrix)
{
    if (!pMatrix)
        return;
    // Stored (x, y) is shown at (a * x + c * y, b * x + d * y).
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
    }
    std::copy_n(pMatrix, m_listMatrix.size(), m_listMatrix.begin());
}

Orientation Orientation::Of(const AVStream &stream, const AVFrame &first)
{
    const uint8_t *pMatrix = FindSideData(stream, AV_PKT_DATA_DISPLAYMATRIX);
    const AVFrameSideData *pData = av_frame_get_side_data(&first, AV_FRAME_DATA_DISPLAYMATRIX);
    if (!pMatrix && pData)
        pMatrix = pData->data;
    return Orientation(reinterpret_cast<const int32_t *>(pMatrix));
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
