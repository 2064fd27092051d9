#pragma once

#include "support/rawunit.h"

#include <algorithm>
#include <random>

/** Generates random sub-picture units for a canvas, well-formed and broken. The same seed gives the same units. */
class RandomUnit
{
public:
    using Bytes = std::vector<std::uint8_t>;

    RandomUnit(std::mt19937 &random, int nCanvasWidth, int nCanvasHeight) :
        m_random(random), m_nCanvasWidth(nCanvasWidth), m_nCanvasHeight(nCanvasHeight)
    {
    }

    Bytes Make()
    {
        RawUnit unit;
        PickArea(unit);
        const int nWidth = unit.x2 - unit.x1 + 1;
        const int nLines = (unit.y2 - unit.y1 + 2) / 2;
        unit.strTop = Field(nWidth, nLines + Pick(-2, 2));
        unit.strBottom = Field(nWidth, nLines + Pick(-2, 2));
        unit.strGap = Digits(2 * (Chance(70) ? 4 : Pick(0, 8)));
        unit.nColours = m_random() & 0xFFFF;
        unit.nContrasts = Chance(70) ? m_random() & 0xFFFF : m_random() & m_random() & 0xFF;
        PickOffsets(unit);
        unit.strControl = Control(unit);
        Bytes bytes = unit.Encode();
        if (Chance(15))
            Damage(bytes);
        return bytes;
    }

private:
    int Pick(int nFrom, int nTo) { return std::uniform_int_distribution<int>(nFrom, std::max(nFrom, nTo))(m_random); }
    bool Chance(int nPercent) { return Pick(0, 99) < nPercent; }

    std::string Digits(int nCount)
    {
        std::string strDigits;
        while (nCount-- > 0)
            strDigits += Hex(m_random(), 1);
        return strDigits;
    }

    static void PutInOrder(int &nFirst, int &nLast)
    {
        if (nFirst > nLast)
            std::swap(nFirst, nLast);
    }

    void PickArea(RawUnit &unit)
    {
        const bool bWild = Chance(6); // off the canvas or with swapped corners
        const int nMore = bWild ? Pick(1, 9) : -1;
        unit.x1 = Pick(0, m_nCanvasWidth + nMore);
        unit.x2 = Pick(0, m_nCanvasWidth + nMore);
        unit.y1 = Pick(0, m_nCanvasHeight + nMore);
        unit.y2 = Chance(10) ? unit.y1 : Pick(0, m_nCanvasHeight + nMore);
        if (!bWild || Chance(50)) {
            PutInOrder(unit.x1, unit.x2);
            PutInOrder(unit.y1, unit.y2);
        }
    }

    void PickOffsets(RawUnit &unit)
    {
        const int nFirst = 4;
        const int nSecond = 4 + static_cast<int>(FromHex(unit.strTop).size());
        const int nEnd = nSecond + static_cast<int>(FromHex(unit.strBottom).size() + FromHex(unit.strGap).size());
        unit.nOffset1 = nFirst;
        unit.nOffset2 = nSecond;
        switch (Pick(0, 19)) {
        case 0:
        case 1:
            std::swap(unit.nOffset1, unit.nOffset2);
            break;
        case 2:
            unit.nOffset2 = unit.nOffset1;
            break;
        case 3:
            unit.nOffset1 = Pick(0, nEnd + 40);
            break;
        case 4:
            unit.nOffset2 = Pick(0, nEnd + 40);
            break;
        default:
            break;
        }
    }

    static std::string Code(int nRun, int nCode)
    {
        const int nValue = nRun << 2 | nCode;
        return Hex(nValue, nRun < 4 ? 1 : nRun < 16 ? 2 : nRun < 64 ? 3 : 4);
    }

    /** A run length of any of the four sizes. */
    int AnyRun()
    {
        const int listSizes[] = {3, 15, 63, 255};
        return Pick(1, listSizes[Pick(0, 3)]);
    }

    std::string Field(int nWidth, int nLines)
    {
        if (Chance(4))
            return Digits(Pick(0, 60));
        std::string strField;
        for (int n = 0; n < nLines; ++n) {
            strField += Line(nWidth);
            if (strField.size() % 2 != 0 && !Chance(3))
                strField += Hex(m_random(), 1);
        }
        return Chance(10) ? strField.substr(0, Pick(0, static_cast<int>(strField.size()))) : strField;
    }

    std::string Line(int nWidth)
    {
        std::string strLine;
        int nColumn = 0;
        const int nStyle = Pick(0, 9);
        const int nEnd = nStyle == 0 ? Pick(0, nWidth) : nWidth; // ends early, with an end-of-line code
        while (nColumn < nEnd) {
            int nRun = std::min(AnyRun(), std::min(255, nEnd - nColumn));
            if (nStyle == 1 && nRun == nEnd - nColumn)
                nRun = std::min(255, nRun + Pick(0, 7)); // past the line's end
            else if (nStyle == 2)
                nRun = AnyRun(); // even by more than a line's length
            strLine += Code(nRun, Pick(0, 3));
            nColumn += nRun;
        }
        return nStyle == 0 || Chance(4) ? strLine + "00" + Hex(m_random() & 0xFF, 2) : strLine;
    }

    /** One to four sequences that share the commands; some are missing or doubled, with unknown ones in between. */
    std::string Control(const RawUnit &unit)
    {
        std::vector<std::string> listCommands = {unit.Colours(), unit.Contrasts(), unit.Area(), unit.Offsets(), "01"};
        if (Chance(12))
            listCommands.erase(listCommands.begin() + Pick(0, 4));
        for (const char *pszExtra : {"00", "07", "02", "01", "08", "FE", "031234", "04ABCD"}) {
            if (Chance(12))
                listCommands.emplace_back(pszExtra);
        }
        std::shuffle(listCommands.begin(), listCommands.end(), m_random);
        const int nSequences = Pick(1, 4);
        std::string strControl;
        std::size_t nNext = 0;
        for (int n = 1; n <= nSequences; ++n) {
            strControl += Hex(Chance(5) ? 0 : m_random(), 4) + Hex(m_random(), 4);
            const std::size_t nUpTo =
                n == nSequences ? listCommands.size() : Pick(0, static_cast<int>(listCommands.size()));
            for (; nNext < nUpTo; ++nNext)
                strControl += listCommands[nNext];
            strControl += "FF";
        }
        if (Chance(5))
            strControl.resize(strControl.size() - 2); // the last sequence has no end
        return Chance(20) ? strControl + Digits(2 * Pick(1, 5)) : strControl;
    }

    void Damage(Bytes &bytes)
    {
        switch (Pick(0, 7)) {
        case 0: // a size near the real one
            SetSize(bytes, static_cast<int>(bytes.size()) + Pick(-12, 12));
            break;
        case 1: // a control area anywhere
            bytes[2] = 0;
            bytes[3] = static_cast<std::uint8_t>(m_random());
            break;
        case 2: // some length
            bytes.resize(Pick(0, static_cast<int>(bytes.size())));
            break;
        case 3: // random bytes with a correct size
            for (auto &byte : bytes)
                byte = static_cast<std::uint8_t>(m_random());
            SetSize(bytes, static_cast<int>(bytes.size()));
            break;
        default:
            for (int n = Pick(1, 6); n > 0; --n)
                bytes[Pick(2, static_cast<int>(bytes.size()) - 1)] = static_cast<std::uint8_t>(m_random());
            break;
        }
    }

    static void SetSize(Bytes &bytes, int nSize)
    {
        bytes[0] = static_cast<std::uint8_t>(nSize >> 8);
        bytes[1] = static_cast<std::uint8_t>(nSize);
    }

    std::mt19937 &m_random;
    int m_nCanvasWidth;
    int m_nCanvasHeight;
};
