#pragma once

#include <cstdint>
#include <vector>

/**
 * A DVD sub-picture unit laid out as by authoring tools: header, top field, bottom field, a control sequence that shows
 * the picture and one that hides it.
 */
struct PictureUnit {
    int nX = 0;
    int nY = 0;
    int nWidth = 0;
    int nHeight = 0;
    std::vector<std::uint8_t> listPixels; ///< codes 0 to 3, nWidth per row
    unsigned nColours = 0x3210;           ///< palette index of each code, code 0 lowest
    unsigned nContrasts = 0xFFF0;         ///< 0 to 15 of each code, code 0 lowest
    unsigned nStopDelay = 200;            ///< of the second control sequence

    /** A rectangle of one code. */
    static PictureUnit Filled(int nX, int nY, int nWidth, int nHeight, int nCode = 1)
    {
        PictureUnit unit;
        unit.nX = nX;
        unit.nY = nY;
        unit.nWidth = nWidth;
        unit.nHeight = nHeight;
        unit.listPixels.assign(static_cast<std::size_t>(nWidth) * nHeight, static_cast<std::uint8_t>(nCode));
        return unit;
    }

    std::vector<std::uint8_t> Encode() const
    {
        std::vector<std::uint8_t> unit(4);
        const std::size_t nTop = unit.size();
        PutField(unit, 0);
        const std::size_t nBottom = unit.size();
        PutField(unit, 1);
        unit.resize(unit.size() + 4); // the decoder stops 4 bytes before the control area
        const std::size_t nControl = unit.size();
        SetShort(unit, 2, nControl);

        const std::size_t nSecond = nControl + 24;
        PutShort(unit, 0);
        PutShort(unit, nSecond);
        unit.insert(unit.end(), {0x01, 0x03});
        PutShort(unit, nColours);
        unit.push_back(0x04);
        PutShort(unit, nContrasts);
        unit.push_back(0x05);
        PutPair(unit, nX, nX + nWidth - 1);
        PutPair(unit, nY, nY + nHeight - 1);
        unit.push_back(0x06);
        PutShort(unit, nTop);
        PutShort(unit, nBottom);
        unit.push_back(0xFF);

        PutShort(unit, nStopDelay);
        PutShort(unit, nSecond);
        unit.insert(unit.end(), {0x02, 0xFF});
        SetShort(unit, 0, unit.size());
        return unit;
    }

private:
    static void PutShort(std::vector<std::uint8_t> &bytes, std::size_t nValue)
    {
        bytes.push_back(static_cast<std::uint8_t>(nValue >> 8));
        bytes.push_back(static_cast<std::uint8_t>(nValue));
    }

    static void SetShort(std::vector<std::uint8_t> &bytes, std::size_t nAt, std::size_t nValue)
    {
        bytes[nAt] = static_cast<std::uint8_t>(nValue >> 8);
        bytes[nAt + 1] = static_cast<std::uint8_t>(nValue);
    }

    static void PutPair(std::vector<std::uint8_t> &bytes, int nFirst, int nSecond)
    {
        bytes.push_back(static_cast<std::uint8_t>(nFirst >> 4));
        bytes.push_back(static_cast<std::uint8_t>((nFirst & 15) << 4 | nSecond >> 8));
        bytes.push_back(static_cast<std::uint8_t>(nSecond));
    }

    void PutField(std::vector<std::uint8_t> &bytes, int nFirstRow) const
    {
        for (int nRow = nFirstRow; nRow < nHeight; nRow += 2) {
            std::vector<int> listNibbles;
            for (int nColumn = 0; nColumn < nWidth;) {
                const std::uint8_t nCode = At(nRow, nColumn);
                int nRun = 1;
                while (nRun < 255 && nColumn + nRun < nWidth && At(nRow, nColumn + nRun) == nCode)
                    ++nRun;
                PutRun(listNibbles, nRun, nCode);
                nColumn += nRun;
            }
            if (listNibbles.size() % 2 != 0)
                listNibbles.push_back(0);
            for (std::size_t n = 0; n < listNibbles.size(); n += 2)
                bytes.push_back(static_cast<std::uint8_t>(listNibbles[n] << 4 | listNibbles[n + 1]));
        }
    }

    static void PutRun(std::vector<int> &listNibbles, int nRun, int nCode)
    {
        const int nValue = nRun << 2 | nCode;
        const int nNibbles = nRun < 4 ? 1 : nRun < 16 ? 2 : nRun < 64 ? 3 : 4;
        for (int n = nNibbles - 1; n >= 0; --n)
            listNibbles.push_back(nValue >> (4 * n) & 15);
    }

    std::uint8_t At(int nRow, int nColumn) const
    {
        return listPixels[static_cast<std::size_t>(nRow) * nWidth + nColumn];
    }
};
