#include "subtitles/vobsubtrack.h"

#include "commandline/failure.h"
#include "subtitles/vobsubindex.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <system_error>
#include <vector>

namespace
{

// The library's rules: the column of the position in a line, and how many bytes it reads for the last picture.
const size_t PositionColumn = 34;
const uint64_t LastBytes = 8192;
// More than any picture with everything up to the next of its language.
const uint64_t MostBytes = uint64_t(64) << 20;

const size_t PackBytes = 14;
const size_t PacketHeader = 6;
const int PrivateStream = 0xbd;
const int Pack = 0xba;
const int Padding = 0xbe;

[[noreturn]] void Refuse(const std::string &strFile, ExitCode code)
{
    throw Failure(code, strFile, std::generic_category().message(errno != 0 ? errno : EIO));
}

bool StartsWith(const std::string &strLine, const char *pKey)
{
    return strLine.rfind(pKey, 0) == 0;
}

/** Length of the packet or pack header at a position, 0 if there is none of a known kind. */
size_t PacketLength(const std::string &strBytes, size_t nAt)
{
    const auto *p = reinterpret_cast<const uint8_t *>(strBytes.data()) + nAt;
    const size_t nLeft = strBytes.size() - nAt;
    if (nLeft < PacketHeader || AV_RB24(p) != 1)
        return 0;
    if (p[3] == Pack)
        return nLeft < PackBytes ? 0 : PackBytes + (p[PackBytes - 1] & 7);
    return p[3] == PrivateStream || p[3] == Padding ? PacketHeader + AV_RB16(p + 4) : 0;
}

/** The subtitle stream id (0x20 to 0x3f) of a packet, -1 for any other packet. */
int LanguageOf(const std::string &strBytes, size_t nAt)
{
    const auto *p = reinterpret_cast<const uint8_t *>(strBytes.data()) + nAt;
    const size_t nLeft = strBytes.size() - nAt;
    if (p[3] != PrivateStream || nLeft < 10 || nLeft < 10U + p[8])
        return -1;
    const int nStream = p[9 + p[8]];
    return nStream >= 0x20 && nStream <= 0x3f ? nStream : -1;
}

/** Removes the packets of all languages except the first. */
std::string OfOneLanguage(const std::string &strBytes)
{
    std::string strKept;
    int nWanted = -1;
    size_t nAt = 0;
    for (size_t nLength = 0; nAt < strBytes.size() && (nLength = PacketLength(strBytes, nAt)) > 0; nAt += nLength) {
        const int nLanguage = LanguageOf(strBytes, nAt);
        nWanted = nWanted < 0 ? nLanguage : nWanted;
        if (nLanguage < 0 || nLanguage == nWanted)
            strKept += strBytes.substr(nAt, nLength);
    }
    return nAt < strBytes.size() ? strKept + strBytes.substr(nAt) : strKept;
}

struct Entry {
    size_t nLine;
    uint64_t nPosition;
};

/** The lines of an index without the other languages. */
struct TrackIndex {
    std::vector<std::string> listLines;
    std::vector<Entry> listEntries;
};

TrackIndex ReadTrack(const std::string &strIndex, int nTrack)
{
    TrackIndex track;
    std::ifstream stream(strIndex, std::ios::binary);
    bool bHeader = true;
    bool bWanted = false;
    bool bFound = false;
    for (std::string strLine; std::getline(stream, strLine);) {
        if (VobSubIndex::IsLanguageLine(strLine)) {
            bHeader = false;
            bWanted = !bFound && VobSubIndex::TrackOf(strLine) == nTrack;
            bFound = bFound || bWanted;
        }
        if (bWanted && StartsWith(strLine, "timestamp:") && strLine.size() > PositionColumn)
            track.listEntries.push_back(
                {track.listLines.size(), std::strtoull(strLine.c_str() + PositionColumn, nullptr, 16) & UINT32_MAX});
        if (bHeader || bWanted)
            track.listLines.push_back(strLine);
    }
    return track;
}

std::string BytesOf(std::ifstream &pictures, const Entry &entry, uint64_t nBytes)
{
    std::string strBytes(nBytes, '\0');
    pictures.clear();
    pictures.seekg(static_cast<std::streamoff>(entry.nPosition));
    pictures.read(strBytes.data(), static_cast<std::streamsize>(nBytes));
    strBytes.resize(pictures.gcount());
    return strBytes;
}

void Write(const std::string &strFile, const std::string &strContent)
{
    std::ofstream stream(strFile, std::ios::binary);
    stream << strContent;
    stream.close();
    if (!stream)
        Refuse(strFile, ExitCode::Output);
}

} // namespace

bool SeparateVobSubTrack(const std::string &strIndex, int nTrack, const std::string &strTo)
{
    TrackIndex track = ReadTrack(strIndex, nTrack);
    const std::string strPictures = VobSubIndex::PicturesOf(strIndex);
    std::ifstream pictures(strPictures, std::ios::binary);
    if (!pictures)
        Refuse(strPictures, ExitCode::Input);
    std::string strOwn;
    bool bForeign = false;
    for (size_t n = 0; n < track.listEntries.size(); ++n) {
        const Entry &entry = track.listEntries[n];
        const bool bLast = n + 1 == track.listEntries.size();
        const uint64_t nBytes = bLast ? LastBytes : track.listEntries[n + 1].nPosition - entry.nPosition;
        // Positions run backwards, or lie too far apart: leave the pair to the library.
        if (nBytes > MostBytes)
            return false;
        const std::string strBytes = BytesOf(pictures, entry, nBytes);
        const std::string strKept = OfOneLanguage(strBytes);
        bForeign = bForeign || strKept.size() < strBytes.size();
        std::array<char, 24> listPosition{};
        (void)std::snprintf(listPosition.data(), listPosition.size(), "%09zx", strOwn.size());
        track.listLines[entry.nLine].replace(PositionColumn, std::string::npos, listPosition.data());
        strOwn += strKept;
    }
    if (!bForeign)
        return false;
    std::string strOwnIndex;
    for (const std::string &strLine : track.listLines)
        strOwnIndex += strLine + "\n";
    Write(strTo, strOwnIndex);
    Write(VobSubIndex::PicturesOf(strTo), strOwn);
    return true;
}
