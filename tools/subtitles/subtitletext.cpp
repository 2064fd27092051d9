#include "subtitles/subtitletext.h"

#include "commandline/readable.h"
#include "subtitles/cuetext.h"
#include "subtitles/srtwriter.h"
#include "subtitles/textencoding.h"

#include <strings.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
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

bool IsBlank(const std::string &strLine)
{
    return strLine.find_first_not_of(Blanks) == std::string::npos;
}

bool IsTimeLine(const std::string &strLine)
{
    const size_t nArrow = strLine.find(Arrow);
    return nArrow != std::string::npos && nArrow > 0;
}

bool IsNumber(const std::string &strLine)
{
    return !IsBlank(strLine) && strLine.find_first_not_of(std::string("0123456789+-") + Blanks) == std::string::npos;
}

bool EndsText(const std::string &strLine)
{
    return strLine.empty() || IsTimeLine(strLine) || IsNumber(strLine);
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

/** Parses a time such as 1:02:03,5. @return milliseconds, or -1 if there is none. @param strRest  what follows it. */
int64_t TimeAt(const std::string &strText, std::string &strRest)
{
    int nHours = 0;
    int nMinutes = 0;
    double dSeconds = 0;
    int nRead = 0;
    std::string strPoint = strText;
    std::replace(strPoint.begin(), strPoint.end(), ',', '.');
    // NOLINTNEXTLINE(cert-err34-c): the digits always fit
    if (std::sscanf(strPoint.c_str(), " %6d:%6d:%12lf%n", &nHours, &nMinutes, &dSeconds, &nRead) != 3)
        return -1;
    strRest = strText.substr(nRead);
    return (int64_t(nHours) * 60 + nMinutes) * 60000 + std::llround(dSeconds * 1000);
}

/** @param bField  whether the end time must fill a field, as in ASS; else what follows it may be meant as text. */
SubtitleText::TextCue CueOf(const std::string &strStart, const std::string &strEnd, bool bField)
{
    SubtitleText::TextCue cue;
    std::string strRestOfStart;
    std::string strRest;
    cue.nStart = TimeAt(strStart, strRestOfStart);
    cue.nEnd = TimeAt(strEnd, strRest);
    if (cue.nStart < 0 || cue.nEnd < 0 || !IsBlank(strRestOfStart) || (bField && !IsBlank(strRest)))
        cue.pTrouble = "the times cannot be read";
    else if (!IsBlank(strRest))
        cue.pTrouble = "text follows the end time";
    else if (cue.nEnd < cue.nStart)
        cue.pTrouble = "the end comes before the start";
    return cue;
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
    std::vector<TextCue> listCues;
    for (size_t n = 0; n < m_listLines.size(); ++n) {
        const std::string &strLine = m_listLines[n];
        const size_t nArrow = strLine.find(Arrow);
        const size_t nStart = m_bScript && IsEvent(strLine) ? FieldOf(strLine, 1) : std::string::npos;
        const size_t nEnd = nStart != std::string::npos ? FieldOf(strLine, 2) : std::string::npos;
        if (nEnd != std::string::npos)
            listCues.push_back(CueOf(strLine.substr(nStart, nEnd - 1 - nStart),
                                     strLine.substr(nEnd, strLine.find(',', nEnd) - nEnd), true));
        else if (!m_bScript && IsTimeLine(strLine) && n + 1 < m_listLines.size() && !EndsText(m_listLines[n + 1]))
            listCues.push_back(CueOf(strLine.substr(0, nArrow), strLine.substr(nArrow + Arrow.size()), false));
        else
            continue;
        if (m_bReturnsOnly)
            listCues.back().pTrouble = "lines end in carriage returns alone";
    }
    return listCues;
}
