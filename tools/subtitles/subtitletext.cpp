#include "subtitles/subtitletext.h"

#include "commandline/readable.h"
#include "subtitles/cuetext.h"
#include "subtitles/cuetimes.h"
#include "subtitles/number.h"
#include "subtitles/srtwriter.h"
#include "subtitles/textencoding.h"

#include <strings.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string_view>

namespace
{

const char *const ByteOrderMark = "\xef\xbb\xbf";
const char *const Blanks = " \t\v\f\r";
constexpr std::string_view Arrow = "-->";
constexpr std::string_view EventKey = "dialogue:";
// Layer,Start,End,Style,Name,MarginL,MarginR,MarginV,Effect come before the text.
const int ScriptFieldsBeforeText = 9;

std::vector<std::string> Split(const std::string &strText, char cEnd)
{
    std::vector<std::string> listLines;
    std::istringstream lines(strText);
    for (std::string strLine; std::getline(lines, strLine, cEnd);)
        listLines.push_back(strLine);
    return listLines;
}

bool IsTimeLine(std::string_view strLine)
{
    const size_t nArrow = strLine.find(Arrow);
    return nArrow != std::string::npos && nArrow > 0;
}

bool EndsText(const std::string &strLine)
{
    return strLine.empty() || IsTimeLine(strLine) || Number<int>(strLine).has_value();
}

bool IsEvent(const std::string &strLine)
{
    const size_t nBegin = std::min(strLine.find_first_not_of(Blanks), strLine.size());
    return strncasecmp(strLine.c_str() + nBegin, EventKey.data(), EventKey.size()) == 0;
}

/** Position of a field of an event, counted from 0; npos if there are fewer. */
size_t FieldOf(const std::string &strLine, int nField)
{
    size_t nAt = strLine.find(':') + 1;
    for (; nField > 0 && nAt != std::string::npos; --nField) {
        nAt = strLine.find(',', nAt);
        nAt += nAt != std::string::npos ? 1 : 0;
    }
    return nAt;
}

/** Why the library does not show a cue with these times, if it does not; null if there is no reason. */
const char *TroubleOf(const CueTime &start, const CueTime &end, bool bTextFollows)
{
    if (!start.bWhole || (!end.bWhole && !bTextFollows))
        return "the times cannot be read";
    if (!end.bWhole)
        return "text follows the end time";
    return end.nMilliseconds < start.nMilliseconds ? "the end comes before the start" : nullptr;
}

SubtitleText::TextCue ScriptCue(const std::string &strStart, const std::string &strEnd)
{
    const CueTime start = ScriptTime(strStart);
    const CueTime end = ScriptTime(strEnd);
    return {start.nMilliseconds, end.nMilliseconds, TroubleOf(start, end, false)};
}

SubtitleText::TextCue SubRipCue(const std::string &strTimeLine)
{
    const size_t nArrow = strTimeLine.find(Arrow);
    const std::string strEnd(Trimmed(std::string_view(strTimeLine).substr(nArrow + Arrow.size())));
    const CueTime start = SubRipTime(strTimeLine.substr(0, nArrow));
    const CueTime end = SubRipTime(strEnd);
    const bool bTextFollows = SubRipTime(strEnd.substr(0, strEnd.find_first_of(Blanks))).bWhole;
    return {start.nMilliseconds, end.nMilliseconds, TroubleOf(start, end, bTextFollows)};
}

/** Whether most lines end in a carriage return alone, as on classic Mac OS; the library reads them as a single line. */
bool EndsInReturnsOnly(const std::string &strText)
{
    size_t nReturns = 0;
    for (size_t n = 0; n + 1 < strText.size(); ++n)
        nReturns += strText[n] == '\r' && strText[n + 1] != '\n' ? 1 : 0;
    return nReturns > static_cast<size_t>(std::count(strText.begin(), strText.end(), '\n'));
}

std::string Joined(const std::vector<std::string> &listLines, size_t nBegin, size_t nEnd)
{
    std::string strText;
    for (size_t n = nBegin; n < nEnd; ++n)
        strText += (n > nBegin ? "\n" : "") + listLines[n];
    return strText;
}

} // namespace

SubtitleText::SubtitleText(const SubtitleSource &source) :
    m_bScript(strcasecmp(source.strFile.c_str() + source.strFile.rfind('.'), ".srt") != 0)
{
    const std::string strBytes = ContentOf(source.strFile);
    TextEncoding encoding(source.strEncoding);
    std::string strText = encoding.ToUtf8(strBytes, source.strFile);
    m_strGuess = encoding.Guess();
    m_bConverted = !source.strEncoding.empty() && strText != strBytes;
    m_bReturnsOnly = EndsInReturnsOnly(strText);
    // The library drops carriage returns.
    if (!m_bReturnsOnly)
        strText.erase(std::remove(strText.begin(), strText.end(), '\r'), strText.end());
    m_listLines = Split(strText, m_bReturnsOnly ? '\r' : '\n');
    if (source.bRaw || m_bReturnsOnly)
        return;
    if (m_bScript)
        CleanScript();
    else
        CleanSubRip();
}

std::string SubtitleText::Text() const
{
    const char cEnd = m_bReturnsOnly ? '\r' : '\n';
    std::string strText = ByteOrderMark;
    for (const std::string &strLine : m_listLines)
        strText += strLine + cEnd;
    return strText;
}

void SubtitleText::CleanSubRip()
{
    std::vector<std::string> listCleaned;
    for (size_t n = 0; n < m_listLines.size();) {
        const size_t nBegin = n;
        while (n < m_listLines.size() && !EndsText(m_listLines[n]))
            ++n;
        // A line that ends the text is kept as a block of its own.
        n = std::max(n, nBegin + 1);
        const std::string strText = Joined(m_listLines, nBegin, n);
        const std::string strPlain = PlainText(strText);
        if (strPlain == PlainLines(strText))
            listCleaned.push_back(strText);
        else if (!strPlain.empty())
            listCleaned.push_back(SrtText(strPlain).substr(0, SrtText(strPlain).size() - 1));
        m_bCleaned = m_bCleaned || strPlain != PlainLines(strText);
    }
    if (m_bCleaned)
        m_listLines = std::move(listCleaned);
}

void SubtitleText::CleanScript()
{
    for (std::string &strLine : m_listLines) {
        const size_t nText = IsEvent(strLine) ? FieldOf(strLine, ScriptFieldsBeforeText) : std::string::npos;
        if (nText == std::string::npos)
            continue;
        std::string strPlain = PlainScriptText(strLine.substr(nText));
        for (size_t n = strPlain.find('\n'); n != std::string::npos; n = strPlain.find('\n', n))
            strPlain.replace(n, 1, "\\N");
        // The library removes blocks in braces itself; only other markup needs a change.
        if (strPlain == WithoutBlocks(strLine.substr(nText)))
            continue;
        strLine.replace(nText, std::string::npos, strPlain);
        m_bCleaned = true;
    }
}

std::vector<SubtitleText::TextCue> SubtitleText::Cues() const
{
    std::vector<TextCue> listCues = m_bScript ? ScriptCues() : SubRipCues();
    if (m_bReturnsOnly) {
        for (TextCue &cue : listCues)
            cue.pTrouble = "lines end in carriage returns alone";
    }
    return listCues;
}

std::vector<SubtitleText::TextCue> SubtitleText::ScriptCues() const
{
    std::vector<TextCue> listCues;
    for (const std::string &strLine : m_listLines) {
        const size_t nStart = IsEvent(strLine) ? FieldOf(strLine, 1) : std::string::npos;
        const size_t nEnd = nStart != std::string::npos ? FieldOf(strLine, 2) : std::string::npos;
        if (nEnd != std::string::npos)
            listCues.push_back(ScriptCue(strLine.substr(nStart, nEnd - 1 - nStart),
                                         strLine.substr(nEnd, strLine.find(',', nEnd) - nEnd)));
    }
    return listCues;
}

/** Takes all texts up to the next time line for one cue: the library shows them at the same times. */
std::vector<SubtitleText::TextCue> SubtitleText::SubRipCues() const
{
    std::vector<TextCue> listCues;
    std::optional<TextCue> cueWithoutText;
    for (const std::string &strLine : m_listLines) {
        const std::string strTrimmed(Trimmed(strLine));
        if (IsTimeLine(strTrimmed)) {
            cueWithoutText = SubRipCue(strTrimmed);
        } else if (cueWithoutText && !strTrimmed.empty() && !Number<int>(strTrimmed)) {
            listCues.push_back(*cueWithoutText);
            cueWithoutText.reset();
        }
    }
    return listCues;
}
