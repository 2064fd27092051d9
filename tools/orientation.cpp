#include "orientation.h"

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
}

Box Orientation::ToStored(const Box &shown, int nStoredWidth, int nStoredHeight) const
{
    const int nWidth = ShownWidth(nStoredWidth, nStoredHeight);
    const int nHeight = ShownHeight(nStoredWidth, nStoredHeight);
    Box box = shown;
    if (m_bFlipX) {
        box.nLeft = nWidth - shown.nRight;
        box.nRight = nWidth - shown.nLeft;
    }
    if (m_bFlipY) {
        box.nTop = nHeight - shown.nBottom;
        box.nBottom = nHeight - shown.nTop;
    }
    return m_bTranspose ? Box{box.nTop, box.nLeft, box.nBottom, box.nRight} : box;
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
