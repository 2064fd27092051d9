#include "subtitles/vobsubindex.h"

#include "commandline/readable.h"
#include "subtitles/number.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

extern "C" {
#include <libavutil/common.h>
#include <libavutil/intreadwrite.h>
}

namespace
{

constexpr std::string_view SizeKey = "size:";
constexpr std::string_view IdKey = "id:";
constexpr std::string_view IndexKey = "index:";
constexpr std::string_view TitleKey = "alt:";
constexpr std::string_view TimeKey = "timestamp:";
// How long the library shows the last picture of a language.
const int64_t LastMilliseconds = 3000;

bool StartsWith(const std::string &strLine, std::string_view strKey)
{
    return strLine.compare(0, strKey.size(), strKey) == 0;
}

std::string Utf8OfUtf16(const std::string &strBytes, bool bBigEndian)
{
    std::string strText;
    size_t n = 2;
    const auto NextUnit = [&] {
        const char *pUnit = strBytes.data() + n;
        n += 2;
        return n > strBytes.size() ? 0U : bBigEndian ? AV_RB16(pUnit) : AV_RL16(pUnit);
    };
    while (n + 2 <= strBytes.size()) {
        uint32_t nCode = 0;
        GET_UTF16(nCode, NextUnit(), nCode = '?';)
        uint8_t nByte = 0;
        PUT_UTF8(nCode, nByte, strText += static_cast<char>(nByte);)
    }
    return strText;
}

/** A file's text without its byte-order mark. */
std::string TextOf(const std::string &strFile)
{
    std::ifstream stream(strFile, std::ios::binary);
    std::ostringstream content;
    content << stream.rdbuf();
    const std::string strBytes = content.str();
    if (StartsWith(strBytes, "\xff\xfe") || StartsWith(strBytes, "\xfe\xff"))
        return Utf8OfUtf16(strBytes, strBytes[0] == '\xfe');
    return StartsWith(strBytes, "\xef\xbb\xbf") ? strBytes.substr(3) : strBytes;
}

/** A clause for the error message that lists the tracks' numbers. */
std::string NumbersOf(const std::vector<VobSubIndex::Language> &listLanguages)
{
    std::string strNumbers;
    for (size_t n = 0; n < listLanguages.size(); ++n) {
        const char *pGap = n == 0 ? "" : n + 1 < listLanguages.size() ? ", " : " and ";
        strNumbers += pGap + std::to_string(listLanguages[n].nTrack);
    }
    return (listLanguages.size() == 1 ? "there is only " : "there are ") + strNumbers;
}

} // namespace

bool VobSubIndex::IsIndex(const std::string &strFile)
{
    return strcasecmp(std::filesystem::path(strFile).extension().c_str(), ".idx") == 0;
}

std::string VobSubIndex::PicturesOf(const std::string &strFile)
{
    return strFile.substr(0, strFile.size() - 3) + "sub";
}

bool VobSubIndex::IsLanguageLine(const std::string &strLine)
{
    return StartsWith(strLine, IdKey);
}

std::optional<int> VobSubIndex::TrackOf(const std::string &strLine)
{
    const size_t nKey = strLine.find(IndexKey);
    const std::optional<int> track = nKey == std::string::npos
                                         ? std::nullopt
                                         : Number<int>(std::string_view(strLine).substr(nKey + IndexKey.size()));
    // --track is never negative.
    return track && *track >= 0 ? track : std::nullopt;
}

VobSubIndex::VobSubIndex(const std::string &strFile)
{
    CheckReadable(strFile);
    std::istringstream lines(TextOf(strFile));
    std::string strLine;
    while (std::getline(lines, strLine)) {
        strLine.erase(std::remove(strLine.begin(), strLine.end(), '\r'), strLine.end());
        ReadLine(strLine);
    }
}

void VobSubIndex::ReadLine(const std::string &strLine)
{
    if (IsLanguageLine(strLine))
        BeginLanguage(strLine);
    else if (m_bHeader && StartsWith(strLine, SizeKey))
        m_strSize = Trimmed(std::string_view(strLine).substr(SizeKey.size()));
    else if (m_bSelectable && StartsWith(strLine, TitleKey))
        m_listLanguages.back().strTitle = Trimmed(std::string_view(strLine).substr(TitleKey.size()));
    else if (m_bSelectable && StartsWith(strLine, TimeKey))
        AddCue(strLine);
}

void VobSubIndex::BeginLanguage(const std::string &strLine)
{
    m_bHeader = false;
    const std::optional<int> track = TrackOf(strLine);
    // If two languages have the same number, the library finds the first.
    m_bSelectable = track && std::none_of(m_listLanguages.begin(), m_listLanguages.end(),
                                          [&](const Language &other) { return other.nTrack == *track; });
    if (!m_bSelectable)
        return;
    Language language;
    language.nTrack = *track;
    language.strLanguage = Trimmed(std::string_view(strLine).substr(IdKey.size(), strLine.find(',') - IdKey.size()));
    if (language.strLanguage == "--")
        language.strLanguage.clear();
    m_listLanguages.push_back(language);
}

/** The library shows every picture until the next; the end stored in the picture does not count. */
void VobSubIndex::AddCue(const std::string &strLine)
{
    std::array<int, 4> listTime{};
    // NOLINTNEXTLINE(cert-err34-c): nine digits always fit
    if (std::sscanf(strLine.c_str() + TimeKey.size(), " %9d:%9d:%9d:%9d", listTime.data(), &listTime[1], &listTime[2],
                    &listTime[3]) != 4)
        listTime = {};
    Cue cue;
    cue.nStart = ((listTime[0] * int64_t(60) + listTime[1]) * 60 + listTime[2]) * 1000 + listTime[3];
    cue.nEnd = cue.nStart + LastMilliseconds;
    std::vector<Cue> &listCues = m_listLanguages.back().listCues;
    if (!listCues.empty())
        listCues.back().nEnd = cue.nStart;
    listCues.push_back(cue);
}

std::string VobSubIndex::ReasonAgainst(int nTrack) const
{
    if (m_listLanguages.empty())
        return "there are no subtitles in it";
    const auto language = std::find_if(m_listLanguages.begin(), m_listLanguages.end(),
                                       [&](const Language &candidate) { return candidate.nTrack == nTrack; });
    if (language == m_listLanguages.end())
        return "there is no subtitle track " + std::to_string(nTrack) + ", " + NumbersOf(m_listLanguages);
    if (language->listCues.empty())
        return "there are no subtitles in track " + std::to_string(nTrack);
    if (m_strSize.empty())
        return "it has no line with the size of the video that it is made for, such as \"size: 720x576\"";
    return "its size, \"" + m_strSize + "\", is not between 1x1 and 4096x4096";
}
