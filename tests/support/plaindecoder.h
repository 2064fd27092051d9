#pragma once

#include <cstdint>
#include <vector>

/**
 * A slow, simple decoder of sub-picture units that tests compare the library's with. It works byte by byte, and throws
 * if it would write outside a plane.
 */
class PlainDecoder
{
public:
    using Bytes = std::vector<std::uint8_t>;

    void Init(const unsigned *pPalette, int nWidth, int nHeight);
    void Release() { m_bReady = false; }
    void Decode(const std::uint8_t *pData, int nLength);
    void DropInput();
    void WriteX();

    int GetHalfByte();
    int GetByte();
    int GetShort();
    void InitRleOutput(int nX, int nY, int nWidth, int nHeight, unsigned nAlphaWord, unsigned nColourWord);
    void NewLine();
    void RleOutput(unsigned nCode);

    Bytes Held() const { return {m_buffer.begin(), m_buffer.begin() + m_nHeld}; }

    // The canvas, which is kept from one unit to the next.
    int m_nCanvasWidth = 0;
    int m_nCanvasHeight = 0;
    Bytes m_listPlanes[4]; ///< Y, U, V, alpha
    Bytes m_listOut[3];    ///< empty until WriteX()
    double m_fStart = 0;
    double m_fStop = 0;
    int m_nTop = 0;
    int m_nBottom = 0;

    // Settings of the host.
    int m_nSubtColor = 1;
    int m_nSubtOffset = 0;
    int m_nChromaFormat = 3;
    int m_nChromaWidth = 0;

private:
    static constexpr int BufferSize = 65536;

    struct Entry {
        std::uint8_t nY, nV, nU;
    };
    struct Control {
        int x1 = 0, x2 = 0, y1 = 0, y2 = 0;
        int off1 = 0, off2 = 0;
        unsigned nColourWord = 0;
        unsigned nAlphaWord = 0;
    };

    void DecodeUnit();
    Control WalkControl();
    void Command(int nCommand, double fTime, Control &control);
    int GetTwelveBits();
    void DecodeCode();
    void Refuse();
    void SetWritePosition(int nRow);
    void WritePixel(const Entry &entry, int nAlpha);
    void Pack();

    bool m_bReady = false;
    Bytes m_buffer = Bytes(BufferSize);
    int m_nHeld = 0;
    int m_nRead = 0;
    bool m_bHalf = false;
    int m_nUnitSize = 0;
    int m_nControlAt = 0;

    Entry m_palette[16] = {};
    int m_colours[4] = {};
    int m_alphas[4] = {};
    int m_nOrgX = 0;
    int m_nOrgY = 0;
    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nX = 0;
    int m_nY = 0;
    int m_nWrite = 0; ///< write position, the same in all four planes
    bool m_bSecondPicture = false;
};
