#pragma once

#include "support/temporaryfolder.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

/** One picture of a language. */
struct VobSubEntry {
    int nStart = 0;                        ///< in milliseconds
    std::vector<std::uint8_t> listUnit;    ///< a unit, or any bytes to write instead of one
    std::optional<std::uint64_t> nFilePos; ///< the position to write in the index instead of the real one
};

/** An index and its program stream, as written by authoring tools: every unit starts a new pack of 2048 bytes. */
struct VobSubPair {
    static constexpr std::size_t PackSize = 2048;

    int nWidth = 96;
    int nHeight = 64;
    /** Greys, each of a different luma. */
    std::array<unsigned int, 16> palette = {0x101010, 0xEBEBEB, 0x808080, 0x404040, 0x202020, 0x303030,
                                            0x505050, 0x606060, 0x707070, 0x909090, 0xA0A0A0, 0xB0B0B0,
                                            0xC0C0C0, 0xD0D0D0, 0xE0E0E0, 0x010101};
    /** Language k has the number k in the index and the sub-stream id 0x20 + k. */
    std::vector<std::vector<VobSubEntry>> listLanguages;
    bool bInterleaved = false; ///< units in order of time instead of one language after the other

    VobSubPair() = default;
    VobSubPair(int nWidth, int nHeight, std::vector<VobSubEntry> listEntries) : nWidth(nWidth), nHeight(nHeight)
    {
        listLanguages.push_back(std::move(listEntries));
    }

    /** Writes both files and returns the name of the index. */
    std::string Write(const TemporaryFolder &folder, const std::string &strName = "pair") const
    {
        folder.Write(strName + ".sub", Stream());
        return folder.Write(strName + ".idx", Index());
    }

    std::string Index() const
    {
        std::string text = "# VobSub index file, v7 (do not modify this line!)\n#\nsize: " + std::to_string(nWidth) +
                           "x" + std::to_string(nHeight) + "\npalette: ";
        for (const unsigned int colour : palette)
            text += (text.back() == ' ' ? "" : ", ") + Format("%06x", colour);
        text += "\nlangidx: 0\n";
        const auto positions = Layout().positions;
        for (std::size_t language = 0; language < listLanguages.size(); ++language) {
            text += "\n# Language\nid: en, index: " + std::to_string(language) + "\n";
            for (std::size_t entry = 0; entry < listLanguages[language].size(); ++entry) {
                const VobSubEntry &item = listLanguages[language][entry];
                text += TimestampLine(item.nStart, item.nFilePos.value_or(positions.at({language, entry})));
            }
        }
        return text;
    }

    std::string Stream() const { return Layout().bytes; }

    /** The index line of one entry. */
    static std::string TimestampLine(int nStart, std::uint64_t nFilePos)
    {
        return "timestamp: " + Format("%02u:", nStart / 3600000) + Format("%02u:", nStart / 60000 % 60) +
               Format("%02u:", nStart / 1000 % 60) + Format("%03u, filepos: ", nStart % 1000) +
               Format("%09llx\n", static_cast<unsigned long long>(nFilePos));
    }

private:
    struct Stored {
        std::string bytes;
        std::map<std::pair<std::size_t, std::size_t>, std::uint64_t> positions; ///< by language and entry
    };

    template <typename Number>
    static std::string Format(const char *pFormat, Number number)
    {
        char text[32];
        (void)std::snprintf(text, sizeof text, pFormat, number);
        return text;
    }

    Stored Layout() const
    {
        std::vector<std::pair<std::size_t, std::size_t>> order;
        for (std::size_t language = 0; language < listLanguages.size(); ++language)
            for (std::size_t entry = 0; entry < listLanguages[language].size(); ++entry)
                order.emplace_back(language, entry);
        if (bInterleaved)
            std::stable_sort(order.begin(), order.end(), [this](const auto &a, const auto &b) {
                return listLanguages[a.first][a.second].nStart < listLanguages[b.first][b.second].nStart;
            });
        Stored stored;
        for (const auto &[language, entry] : order) {
            stored.positions[{language, entry}] = stored.bytes.size();
            PutUnit(stored.bytes, static_cast<unsigned>(0x20 + language), listLanguages[language][entry]);
        }
        return stored;
    }

    static void PutUnit(std::string &bytes, unsigned nSubStream, const VobSubEntry &entry)
    {
        std::size_t done = 0;
        do {
            std::string pack = PackHeader();
            std::string header = done == 0 ? PtsHeader(entry.nStart) : std::string();
            const std::size_t room = PackSize - pack.size() - 10 - header.size();
            const std::size_t length = std::min(room, entry.listUnit.size() - done);
            // Space too short for a padding packet is filled with stuffing bytes in the header.
            if (room - length < 6)
                header.append(room - length, '\xFF');
            pack += std::string("\0\0\1\xBD", 4) + Short(3 + header.size() + 1 + length) + '\x81';
            pack += done == 0 ? '\x80' : '\0';
            pack += static_cast<char>(header.size());
            pack += header;
            pack += static_cast<char>(nSubStream);
            pack.append(entry.listUnit.begin() + static_cast<std::ptrdiff_t>(done),
                        entry.listUnit.begin() + static_cast<std::ptrdiff_t>(done + length));
            if (const std::size_t left = PackSize - pack.size(); left != 0)
                pack += std::string("\0\0\1\xBE", 4) + Short(left - 6) + std::string(left - 6, '\xFF');
            bytes += pack;
            done += length;
        } while (done < entry.listUnit.size());
    }

    static std::string PackHeader() { return {"\0\0\1\xBA\x44\0\4\0\4\1\1\x89\xC3\xF8", 14}; }

    static std::string PtsHeader(int nStart)
    {
        const std::uint64_t pts = static_cast<std::uint64_t>(nStart) * 90;
        std::string header(1, static_cast<char>(0x21 | (pts >> 29 & 0x0E)));
        header += Short((pts >> 14 & 0xFFFE) | 1);
        return header + Short((pts << 1 & 0xFFFE) | 1);
    }

    static std::string Short(std::uint64_t nValue)
    {
        return {static_cast<char>(nValue >> 8 & 0xFF), static_cast<char>(nValue & 0xFF)};
    }
};
