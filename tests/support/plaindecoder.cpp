#include "support/plaindecoder.h"

#include <algorithm>

void PlainDecoder::Init(const unsigned *pPalette, int nWidth, int nHeight)
{
    const bool bUsable = nWidth >= 1 && nWidth <= 4096 && nHeight >= 1 && nHeight <= 4096;
    m_nSubtColor = 1;
    m_nCanvasWidth = m_nChromaWidth = bUsable ? nWidth : 0;
    m_nCanvasHeight = bUsable ? nHeight : 0;
    m_nSubtOffset = 0;
    m_nChromaFormat = 3;
    for (int k = 0; k < 16; ++k) {
        m_palette[k].nY = pPalette[k] & 0xFF;
        m_palette[k].nV = (pPalette[k] >> 16) & 0xFF;
        m_palette[k].nU = (pPalette[k] >> 8) & 0xFF;
    }
    const std::size_t nSize = static_cast<std::size_t>(m_nCanvasWidth) * m_nCanvasHeight;
    m_listPlanes[0].assign(nSize, 0);
    m_listPlanes[1].assign(nSize, 128);
    m_listPlanes[2].assign(nSize, 128);
    m_listPlanes[3].assign(nSize, 0);
    for (auto &out : m_listOut)
        out.clear();
    m_nRead = m_nHeld = m_nUnitSize = m_nControlAt = 0;
    m_bReady = true;
}

int PlainDecoder::GetHalfByte()
{
    if (!m_bReady || m_nRead >= BufferSize)
        return 0;
    if (m_bHalf) {
        m_bHalf = false;
        return m_buffer[m_nRead++] & 15;
    }
    m_bHalf = true;
    return m_buffer[m_nRead] >> 4;
}

int PlainDecoder::GetByte()
{
    m_bHalf = false;
    if (!m_bReady || m_nRead >= BufferSize)
        return 0;
    return m_buffer[m_nRead++];
}

int PlainDecoder::GetShort()
{
    const int nHigh = GetByte();
    return nHigh << 8 | GetByte();
}

void PlainDecoder::Decode(const std::uint8_t *pData, int nLength)
{
    if (!m_bReady || nLength < 0)
        return;
    if (m_nHeld + nLength > BufferSize) {
        Refuse();
        return;
    }
    for (int n = 0; n < nLength; ++n)
        m_buffer[m_nHeld++] = pData[n];
    if (m_nRead == 0) {
        if (m_nHeld < 4)
            return;
        m_nUnitSize = GetShort();
        m_nControlAt = GetShort();
    }
    if (m_nHeld >= m_nUnitSize)
        DecodeUnit();
}

void PlainDecoder::DropInput()
{
    m_nHeld = m_nRead = m_nUnitSize = m_nControlAt = 0;
    m_bHalf = false;
}

void PlainDecoder::Refuse()
{
    DropInput();
    InitRleOutput(0, 0, 0, 0, 0, 0);
}

void PlainDecoder::DecodeUnit()
{
    const int nBase = 4;
    if (m_nControlAt < 4 || m_nControlAt >= m_nUnitSize) {
        Refuse();
        return;
    }
    m_bHalf = false;
    m_nRead = nBase + m_nControlAt - 4;
    const Control control = WalkControl();
    if (nBase + control.off1 > m_nUnitSize || nBase + control.off2 > m_nUnitSize) {
        Refuse();
        return;
    }
    InitRleOutput(control.x1, control.y1, control.x2 - control.x1 + 1, control.y2 - control.y1 + 1, control.nAlphaWord,
                  control.nColourWord);

    m_bSecondPicture = false;
    m_nRead = nBase + control.off1;
    while (m_nRead < m_nControlAt - 4 && !m_bSecondPicture)
        DecodeCode();

    SetWritePosition(1);
    m_nRead = nBase + control.off2;
    m_nY = 1;
    m_nX = 0;
    while (m_nRead < m_nControlAt - 4)
        DecodeCode();

    m_nBottom = m_nOrgY + m_nBottom;
    m_nTop = m_nOrgY + m_nTop;
    if (m_nBottom >= m_nCanvasHeight)
        m_nBottom = m_nCanvasHeight - 1;

    m_nHeld -= m_nUnitSize;
    for (int n = 0; n < m_nHeld; ++n)
        m_buffer[n] = m_buffer[m_nRead + n];
    m_nRead = 0;
}

PlainDecoder::Control PlainDecoder::WalkControl()
{
    Control control;
    int nPrevious = GetShort();
    for (;;) {
        const int nDate = GetShort();
        int nCommand = GetByte();
        if (nCommand != 0xFF) {
            const double fTime = nDate * 1024 / 90; // NOLINT(bugprone-integer-division): whole milliseconds
            do {
                Command(nCommand, fTime, control);
                nCommand = GetByte();
            } while (m_nRead < m_nHeld && nCommand != 0xFF);
        }
        const int nNext = GetShort();
        if (m_nRead >= m_nHeld || nNext == nPrevious)
            return control;
        nPrevious = nNext;
    }
}

int PlainDecoder::GetTwelveBits()
{
    const int nFirst = GetHalfByte();
    const int nSecond = GetHalfByte();
    return nFirst * 256 + nSecond * 16 + GetHalfByte();
}

void PlainDecoder::Command(int nCommand, double fTime, Control &control)
{
    switch (nCommand) {
    case 1:
        m_fStart = fTime;
        break;
    case 2:
        m_fStop = fTime;
        break;
    case 3:
        control.nColourWord = GetShort();
        break;
    case 4:
        control.nAlphaWord = GetShort();
        break;
    case 5:
        control.x1 = GetTwelveBits();
        control.x2 = GetTwelveBits();
        control.y1 = GetTwelveBits();
        control.y2 = GetTwelveBits();
        break;
    case 6:
        control.off1 = GetShort() - 4;
        control.off2 = GetShort() - 4;
        break;
    default:
        break;
    }
}

void PlainDecoder::DecodeCode()
{
    const int p = GetHalfByte();
    if (p >= 4) {
        RleOutput(p);
        return;
    }
    const int q = GetHalfByte();
    if (p >= 1) {
        RleOutput(p * 16 + q);
        return;
    }
    const int r = GetHalfByte();
    if (q >= 4) {
        RleOutput(q * 16 + r);
        return;
    }
    const int s = GetHalfByte();
    if (q >= 1) {
        RleOutput(q * 256 + r * 16 + s);
        return;
    }
    NewLine();
    m_nX = 0;
}

void PlainDecoder::SetWritePosition(int nRow)
{
    m_nWrite = (m_nOrgY + nRow) * m_nCanvasWidth + m_nOrgX;
}

void PlainDecoder::InitRleOutput(int nX, int nY, int nWidth, int nHeight, unsigned nAlphaWord, unsigned nColourWord)
{
    if (!m_bReady)
        return;
    const bool bInside = nX >= 0 && nY >= 0 && nWidth >= 1 && nHeight >= 1 && nX < m_nCanvasWidth &&
                         nY < m_nCanvasHeight && nWidth <= m_nCanvasWidth - nX && nHeight <= m_nCanvasHeight - nY;
    if (!bInside)
        nX = nY = nWidth = nHeight = 0;
    if (m_nSubtColor == 0) {
        m_palette[0] = {0, 128, 128};
        for (int k = 1; k < 16; ++k)
            m_palette[k] = {255, 128, 128};
    }
    for (int k = 0; k < 4; ++k) {
        m_colours[k] = (nColourWord >> (4 * k)) & 15;
        m_alphas[k] = (nAlphaWord >> (4 * k)) & 15;
    }
    for (auto &nAlpha : m_listPlanes[3])
        nAlpha = 0;
    m_nTop = m_nCanvasHeight;
    m_nBottom = 0;
    m_nOrgX = nX;
    m_nOrgY = nY;
    m_nWidth = nWidth;
    m_nHeight = nHeight;
    m_nX = m_nY = 0;
    SetWritePosition(0);
}

void PlainDecoder::WritePixel(const Entry &entry, int nAlpha)
{
    m_listPlanes[0].at(m_nWrite) = entry.nY;
    m_listPlanes[1].at(m_nWrite) = entry.nU;
    m_listPlanes[2].at(m_nWrite) = entry.nV;
    m_listPlanes[3].at(m_nWrite) = static_cast<std::uint8_t>(nAlpha * 16);
    ++m_nWrite;
}

void PlainDecoder::RleOutput(unsigned nCode)
{
    if (!m_bReady || nCode == 0 || m_nY >= m_nHeight)
        return;
    const Entry &entry = m_palette[m_colours[nCode & 3]];
    const int nAlpha = m_alphas[nCode & 3];
    const int nRun = static_cast<int>(nCode >> 2);
    const int nNewX = m_nX + nRun;
    if (nNewX < m_nWidth) {
        for (int n = 0; n < nRun; ++n)
            WritePixel(entry, nAlpha);
        m_nX = nNewX;
    } else {
        for (int n = m_nX; n < m_nWidth; ++n)
            WritePixel(entry, nAlpha);
        NewLine();
        m_nX = nNewX - m_nWidth;
        m_nWrite += m_nX;
    }
    if (nAlpha != 0) {
        m_nTop = std::min(m_nTop, m_nY);
        m_nBottom = std::max(m_nBottom, m_nY);
    }
}

void PlainDecoder::NewLine()
{
    if (!m_bReady)
        return;
    m_nY += 2;
    if (m_nY >= m_nHeight)
        m_bSecondPicture = true;
    SetWritePosition(m_nY);
    if (m_bHalf)
        ++m_nRead;
    m_bHalf = false;
}

void PlainDecoder::WriteX()
{
    if (!m_bReady)
        return;
    const int nPixels = m_nCanvasWidth * m_nCanvasHeight;
    m_listOut[0].assign(nPixels, 255);
    m_listOut[1].assign(nPixels, 0);
    m_listOut[2].assign(nPixels, 255);
    const bool bShifted = std::int64_t{m_nSubtOffset} + m_nBottom < m_nCanvasHeight - 10;
    const int nFirst = std::max(m_nTop + (bShifted ? m_nSubtOffset : m_nCanvasHeight - m_nBottom - 10), 10);
    const bool bSparse = m_nChromaFormat == 1;
    int nChroma = (bSparse ? nFirst >> 1 : nFirst) * m_nChromaWidth;
    for (int r = 0; r <= m_nBottom - m_nTop; ++r) {
        if (m_nTop + r >= m_nCanvasHeight)
            break; // the row is from an earlier, higher canvas
        for (int c = 0; c < m_nCanvasWidth; ++c) {
            const int nFrom = (m_nTop + r) * m_nCanvasWidth + c;
            const bool bVisible = m_listPlanes[3].at(nFrom) != 0;
            const bool bChroma = !bSparse || (r % 2 == 0 && c % 2 == 0);
            if (bVisible && nFirst + r < m_nCanvasHeight) // else the row is outside the canvas
                m_listOut[0].at((nFirst + r) * m_nCanvasWidth + c) = m_listPlanes[0].at(nFrom);
            if (bVisible && bChroma && nChroma >= 0 && nChroma < nPixels) {
                m_listOut[1].at(nChroma) = m_listPlanes[1].at(nFrom);
                m_listOut[2].at(nChroma) = m_listPlanes[2].at(nFrom);
            }
            nChroma += bChroma;
        }
    }
    Pack();
}

void PlainDecoder::Pack()
{
    const std::size_t nPixels = m_listOut[0].size();
    for (std::size_t i = 0; i < nPixels; ++i) {
        for (std::size_t nPlane = 0; nPlane < 3; ++nPlane) {
            const std::size_t nAt = 3 * i + nPlane;
            m_listPlanes[nAt / nPixels][nAt % nPixels] = m_listOut[nPlane][i];
        }
    }
}
