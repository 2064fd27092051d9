#include "subtitles/srtwriter.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

namespace
{

const char *const ByteOrderMark = "\xef\xbb\xbf";
// Invisible; keeps a line of text from being read as a cue number or a time line.
const char *const ZeroWidthSpace = "\xe2\x80\x8b";
constexpr std::string_view Arrow = "-->";
const int64_t UsualMilliseconds = 5000;

/** Appends a digit 5, half a millisecond: the library truncates seconds * 1000, which could come out 1 ms short. */
std::string SrtTime(int64_t nMilliseconds)
{
    std::array<char, 48> listText{};
    (void)std::snprintf(listText.data(), listText.size(), "%02lld:%02d:%02d,%03d5",
                        static_cast<long long>(nMilliseconds / 3600000), static_cast<int>(nMilliseconds / 60000 % 60),
                        static_cast<int>(nMilliseconds / 1000 % 60), static_cast<int>(nMilliseconds % 1000));
    return listText.data();
}

bool LooksLikeANumber(const std::string &strLine)
{
    const auto IsAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80; };
    return std::any_of(strLine.begin(), strLine.end(), [](char c) { return c >= '0' && c <= '9'; }) &&
           std::all_of(strLine.begin(), strLine.end(), [&](char c) {
               return !IsAscii(c) || std::string("0123456789+- \t\v\f").find(c) != std::string::npos;
           });
}

/** A line changed, without visible difference, so that the library's SubRip reader takes it for text. */
std::string SrtLine(std::string strLine)
{
    // An empty line would end the cue.
    if (strLine.empty())
        return " ";
    for (size_t n = strLine.find(Arrow); n != std::string::npos; n = strLine.find(Arrow, n))
        strLine.insert(n + Arrow.size() - 1, ZeroWidthSpace);
    return LooksLikeANumber(strLine) ? strLine + ZeroWidthSpace : strLine;
}

int64_t EndOf(const Cue &cue)
{
    if (cue.bEndKnown)
        return cue.nEnd;
    const int64_t nUsual = cue.nStart + UsualMilliseconds;
    return cue.nEnd > cue.nStart ? std::min(cue.nEnd, nUsual) : nUsual;
}

} // namespace

std::string SrtText(const std::string &strText)
{
    std::string strLines;
    for (size_t nBegin = 0; nBegin <= strText.size();) {
        const size_t nEnd = std::min(strText.find('\n', nBegin), strText.size());
        strLines += SrtLine(strText.substr(nBegin, nEnd - nBegin)) + "\n";
        nBegin = nEnd + 1;
    }
    return strLines;
}

/** Keeps the order of the original file: where cues overlap, the library shows the first. */
std::string SrtOf(std::vector<Cue> listCues)
{
    std::stable_sort(listCues.begin(), listCues.end(), [](const Cue &a, const Cue &b) { return a.nOrder < b.nOrder; });
    std::string strSrt = ByteOrderMark;
    int nNumber = 0;
    for (const Cue &cue : listCues) {
        if (!cue.strText.empty())
            strSrt += std::to_string(++nNumber) + "\n" + SrtTime(cue.nStart) + " " + std::string(Arrow) + " " +
                      SrtTime(EndOf(cue)) + "\n" + SrtText(cue.strText) + "\n";
    }
    return strSrt;
}
