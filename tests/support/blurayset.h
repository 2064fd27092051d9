#pragma once

#include <cstdint>
#include <string>
#include <vector>

/** A Blu-ray display set as one packet of a container. All numbers are stored unchecked. */
struct BluRaySet {
    struct Color {
        std::uint8_t nNumber, nY, nCr, nCb, nAlpha;
    };
    /** A rectangle of one colour. */
    struct Object {
        int nId, nWidth, nHeight;
        std::uint8_t nColor;
        int nRuns = -1; ///< rows that are stored; -1 for all
    };
    struct Place {
        int nId, nX, nY;
    };

    int nWidth = 96;
    int nHeight = 64;
    bool bStart = true; ///< the decoder is to forget all objects
    std::vector<Color> listColors;
    std::vector<Object> listObjects;
    std::vector<Place> listPlaces; ///< what shows, of these objects and of those before

    /** The segments of the packet, as one packet or, in some containers, as one each. */
    std::vector<std::string> Segments() const
    {
        std::string composition = Short(nWidth) + Short(nHeight) + '\x10' + Short(1);
        composition += static_cast<char>(bStart ? 0x80 : 0);
        composition += std::string(2, '\0') + static_cast<char>(listPlaces.size());
        for (const Place &place : listPlaces)
            composition += Short(place.nId) + std::string(2, '\0') + Short(place.nX) + Short(place.nY);
        std::vector<std::string> segments = {Segment(0x16, composition)};
        std::string palette(2, '\0');
        for (const Color &color : listColors)
            palette +=
                std::string{static_cast<char>(color.nNumber), static_cast<char>(color.nY), static_cast<char>(color.nCr),
                            static_cast<char>(color.nCb), static_cast<char>(color.nAlpha)};
        if (!listColors.empty())
            segments.push_back(Segment(0x14, palette));
        for (const Object &object : listObjects)
            segments.push_back(Segment(0x15, Definition(object)));
        segments.push_back(Segment(0x80, ""));
        return segments;
    }

    std::string Packet() const
    {
        std::string packet;
        for (const std::string &segment : Segments())
            packet += segment;
        return packet;
    }

private:
    static std::string Short(int nValue)
    {
        return {static_cast<char>(nValue >> 8 & 0xFF), static_cast<char>(nValue & 0xFF)};
    }

    static std::string Segment(int nType, const std::string &strBody)
    {
        return static_cast<char>(nType) + Short(static_cast<int>(strBody.size())) + strBody;
    }

    static std::string Definition(const Object &object)
    {
        std::string line = {'\0',
                            static_cast<char>(0xC0 | object.nWidth >> 8),
                            static_cast<char>(object.nWidth & 0xFF),
                            static_cast<char>(object.nColor),
                            '\0',
                            '\0'};
        std::string lines;
        for (int nRow = 0; nRow < (object.nRuns < 0 ? object.nHeight : object.nRuns); ++nRow)
            lines += line;
        const int nLength = static_cast<int>(lines.size()) + 4;
        return Short(object.nId) + '\0' + '\xC0' + static_cast<char>(nLength >> 16) + Short(nLength) +
               Short(object.nWidth) + Short(object.nHeight) + lines;
    }
};
