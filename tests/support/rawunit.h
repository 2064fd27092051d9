#pragma once

#include <cstdint>
#include <string>
#include <vector>

/** Bytes from hexadecimal digits. Spaces are skipped; an odd digit at the end is padded with 0. */
inline std::vector<std::uint8_t> FromHex(const std::string &strDigits)
{
    std::vector<std::uint8_t> bytes;
    bool bHalf = false;
    for (const char c : strDigits) {
        if (c == ' ')
            continue;
        const int nValue = c <= '9' ? c - '0' : c - 'A' + 10;
        if (bHalf)
            bytes.back() = static_cast<std::uint8_t>(bytes.back() | nValue);
        else
            bytes.push_back(static_cast<std::uint8_t>(nValue << 4));
        bHalf = !bHalf;
    }
    return bytes;
}

/** A number as hexadecimal digits. */
inline std::string Hex(unsigned nValue, int nDigits)
{
    std::string strDigits;
    while (nDigits-- > 0)
        strDigits += "0123456789ABCDEF"[nValue >> (4 * nDigits) & 15];
    return strDigits;
}

/** A sub-picture unit given digit by digit. */
struct RawUnit {
    std::string strTop;              ///< the top field's digits
    std::string strBottom;           ///< the bottom field's digits
    std::string strGap = "00000000"; ///< between pixels and control area, 4 bytes before which the decoder stops
    std::string strControl;          ///< the control area; if empty, Control() is used

    int x1 = 0;
    int x2 = 0;
    int y1 = 0;
    int y2 = 0;
    unsigned nColours = 0x3210;
    unsigned nContrasts = 0xFFFF;
    int nOffset1 = -1; ///< stated offsets of the fields; if negative, the real ones
    int nOffset2 = -1;

    static RawUnit InArea(int nX, int nY, int nWidth, int nHeight)
    {
        RawUnit unit;
        unit.x1 = nX;
        unit.x2 = nX + nWidth - 1;
        unit.y1 = nY;
        unit.y2 = nY + nHeight - 1;
        return unit;
    }

    std::string Colours() const { return "03" + Hex(nColours, 4); }
    std::string Contrasts() const { return "04" + Hex(nContrasts, 4); }
    std::string Area() const { return "05" + Hex(x1, 3) + Hex(x2, 3) + Hex(y1, 3) + Hex(y2, 3); }
    std::string Offsets() const
    {
        const int nTop = nOffset1 >= 0 ? nOffset1 : 4;
        const int nBottom = nOffset2 >= 0 ? nOffset2 : 4 + static_cast<int>(FromHex(strTop).size());
        return "06" + Hex(nTop, 4) + Hex(nBottom, 4);
    }

    /** One control sequence with all commands. */
    std::string Control() const { return "00000000" + Colours() + Contrasts() + Area() + Offsets() + "FF"; }

    std::vector<std::uint8_t> Encode() const
    {
        std::vector<std::uint8_t> unit(4);
        for (const auto &strPart : {strTop, strBottom, strGap})
            Append(unit, strPart);
        const std::size_t nControl = unit.size();
        Append(unit, strControl.empty() ? Control() : strControl);
        unit[0] = static_cast<std::uint8_t>(unit.size() >> 8);
        unit[1] = static_cast<std::uint8_t>(unit.size());
        unit[2] = static_cast<std::uint8_t>(nControl >> 8);
        unit[3] = static_cast<std::uint8_t>(nControl);
        return unit;
    }

private:
    static void Append(std::vector<std::uint8_t> &bytes, const std::string &strDigits)
    {
        const auto part = FromHex(strDigits);
        bytes.insert(bytes.end(), part.begin(), part.end());
    }
};
