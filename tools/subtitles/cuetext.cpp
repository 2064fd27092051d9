#include "subtitles/cuetext.h"

#include <algorithm>
#include <cctype>

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace
{

using View = std::string_view;

struct Replacement {
    View strName;
    View strText;
};

// ReadOrder,Layer,Style,Name,MarginL,MarginR,MarginV,Effect come before the text.
const int AssFieldsBeforeText = 8;
const View NoBreakSpace = "\xc2\xa0";
constexpr size_t LongestTagName = 6;

/** Finds the next occurrence of a character. Positions only move forward, so each is searched once. */
class NextOf
{
public:
    NextOf(View strText, char cWanted) : m_strText(strText), m_nFound(strText.find(cWanted)), m_cWanted(cWanted) {}

    /** Position of the first one in @p strRest, which is a suffix of the text; View::npos if there is none. */
    size_t In(View strRest)
    {
        const size_t nFrom = m_strText.size() - strRest.size();
        if (m_nFound < nFrom)
            m_nFound = m_strText.find(m_cWanted, nFrom);
        return m_nFound == View::npos ? View::npos : m_nFound - nFrom;
    }

private:
    View m_strText;
    size_t m_nFound;
    char m_cWanted;
};

bool IsDigit(char c)
{
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

/** Not everything in angle brackets is a tag: text such as <3 stays. */
bool IsTag(View strInside)
{
    static const std::array<View, 14> Names = {"b",  "br",   "c", "em",   "font",   "i", "lang",
                                               "rt", "ruby", "s", "span", "strong", "u", "v"};
    if (!strInside.empty() && strInside.front() == '/')
        strInside.remove_prefix(1);
    // Karaoke time stamps, such as <00:01.500>.
    if (!strInside.empty() && IsDigit(strInside.front()))
        return strInside.find_first_not_of("0123456789:.") == View::npos && strInside.find(':') != View::npos;
    std::string strName;
    for (const char c : strInside.substr(0, LongestTagName + 1)) {
        if (View(" \t\n./").find(c) != View::npos)
            break;
        strName += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return std::find(Names.begin(), Names.end(), strName) != Names.end();
}

bool IsLineBreakTag(View strInside)
{
    return strInside.size() >= 2 && std::tolower(strInside[0]) == 'b' && std::tolower(strInside[1]) == 'r';
}

/** The next ends of tags and styling blocks in a text. */
struct MarkupEnds {
    explicit MarkupEnds(View strText) : tags(strText, '>'), blocks(strText, '}') {}

    NextOf tags;
    NextOf blocks;
};

/** Length of the tag or styling block that a text begins with, 0 if there is none. */
size_t MarkupLength(View strText, MarkupEnds &ends)
{
    if (strText.front() == '<') {
        const size_t nEnd = ends.tags.In(strText);
        return nEnd != View::npos && IsTag(strText.substr(1, nEnd - 1)) ? nEnd + 1 : 0;
    }
    if (strText.substr(0, 2) == "{\\") {
        const size_t nEnd = ends.blocks.In(strText);
        return nEnd != View::npos ? nEnd + 1 : 0;
    }
    return 0;
}

const Replacement *EntityAt(View strText)
{
    static const std::array<Replacement, 6> Entities = {{{"&amp;", "&"},
                                                         {"&lt;", "<"},
                                                         {"&gt;", ">"},
                                                         {"&nbsp;", NoBreakSpace},
                                                         {"&lrm;", "\xe2\x80\x8e"},
                                                         {"&rlm;", "\xe2\x80\x8f"}}};
    const auto entity = std::find_if(Entities.begin(), Entities.end(), [&](const Replacement &candidate) {
        return strText.substr(0, candidate.strName.size()) == candidate.strName;
    });
    return entity != Entities.end() ? &*entity : nullptr;
}

std::string WithoutTags(View strText)
{
    std::string strPlain;
    MarkupEnds ends(strText);
    while (!strText.empty()) {
        size_t nTaken = MarkupLength(strText, ends);
        if (nTaken > 0) {
            if (IsLineBreakTag(strText.substr(1)))
                strPlain += '\n';
        } else if (const Replacement *pEntity = EntityAt(strText)) {
            strPlain += pEntity->strText;
            nTaken = pEntity->strName.size();
        } else {
            strPlain += strText.front();
            nTaken = 1;
        }
        strText.remove_prefix(nTaken);
    }
    return strPlain;
}

/** Whether a drawing follows an override block; bBefore if the block has no \\p tag. */
bool DrawsAfter(View strBlock, bool bBefore)
{
    for (size_t n = strBlock.find("\\p"); n != View::npos; n = strBlock.find("\\p", n + 1)) {
        if (n + 2 < strBlock.size() && IsDigit(strBlock[n + 2]))
            bBefore = strBlock[n + 2] != '0';
    }
    return bBefore;
}

const Replacement *EscapeAt(View strText)
{
    static const std::array<Replacement, 5> Escapes = {
        {{"\\N", "\n"}, {"\\n", " "}, {"\\h", NoBreakSpace}, {"\\{", "{"}, {"\\}", "}"}}};
    const auto escape = std::find_if(Escapes.begin(), Escapes.end(), [&](const Replacement &candidate) {
        return strText.substr(0, candidate.strName.size()) == candidate.strName;
    });
    return escape != Escapes.end() ? &*escape : nullptr;
}

/** Also removes drawings, whose coordinates would show as text. */
std::string WithoutOverrides(View strText)
{
    std::string strPlain;
    bool bDrawing = false;
    NextOf ends(strText, '}');
    while (!strText.empty()) {
        size_t nTaken = 1;
        const size_t nEnd = strText.front() == '{' ? ends.In(strText) : View::npos;
        if (nEnd != View::npos) {
            nTaken = nEnd + 1;
            bDrawing = DrawsAfter(strText.substr(0, nTaken), bDrawing);
        } else if (const Replacement *pEscape = EscapeAt(strText)) {
            nTaken = pEscape->strName.size();
            if (!bDrawing)
                strPlain += pEscape->strText;
        } else if (!bDrawing) {
            strPlain += strText.front();
        }
        strText.remove_prefix(nTaken);
    }
    return strPlain;
}

/** The text of a MOV sample: after its 16-bit length and before the style boxes. */
View MovText(View strSample)
{
    if (strSample.size() < 2)
        return {};
    return strSample.substr(2, AV_RB16(strSample.data()));
}

View Payload(const AVPacket &packet)
{
    return {reinterpret_cast<const char *>(packet.data), static_cast<size_t>(packet.size)};
}

/** Converts line ends to line feeds and removes NULs, and blanks and blank lines at the beginning and end. */
std::string Tidy(const std::string &strText)
{
    std::string strTidy;
    for (size_t n = 0; n < strText.size(); ++n) {
        const bool bPair = strText[n] == '\r' && n + 1 < strText.size() && strText[n + 1] == '\n';
        if (strText[n] != '\0' && !bPair)
            strTidy += strText[n] == '\r' ? '\n' : strText[n];
    }
    const char *const Blanks = " \t\n";
    const size_t nText = strTidy.find_first_not_of(Blanks);
    if (nText == std::string::npos)
        return "";
    strTidy.erase(strTidy.find_last_not_of(Blanks) + 1);
    return strTidy.substr(nText);
}

} // namespace

bool HoldsText(AVCodecID id)
{
    return id == AV_CODEC_ID_SUBRIP || id == AV_CODEC_ID_WEBVTT || id == AV_CODEC_ID_TEXT ||
           id == AV_CODEC_ID_MOV_TEXT || id == AV_CODEC_ID_ASS;
}

std::string CueText(AVCodecID id, const AVPacket &packet)
{
    const View strPayload = Payload(packet);
    if (id == AV_CODEC_ID_ASS)
        return AssEventText(strPayload);
    if (id == AV_CODEC_ID_SUBRIP || id == AV_CODEC_ID_WEBVTT)
        return PlainText(std::string(strPayload));
    return Tidy(std::string(id == AV_CODEC_ID_MOV_TEXT ? MovText(strPayload) : strPayload));
}

std::string PlainText(const std::string &strText)
{
    return Tidy(WithoutTags(strText));
}

std::string PlainLines(const std::string &strText)
{
    return Tidy(strText);
}

std::string PlainScriptText(const std::string &strText)
{
    return Tidy(WithoutOverrides(strText));
}

std::string WithoutBlocks(const std::string &strText)
{
    std::string strPlain = strText;
    for (size_t n = strPlain.find('{'); n != std::string::npos; n = strPlain.find('{', n)) {
        const size_t nEnd = strPlain.find('}', n);
        if (nEnd == std::string::npos)
            break;
        strPlain.erase(n, nEnd + 1 - n);
    }
    return Tidy(strPlain);
}

std::string AssEventText(std::string_view strEvent)
{
    for (int n = 0; n < AssFieldsBeforeText; ++n)
        strEvent.remove_prefix(std::min(strEvent.find(','), strEvent.size() - 1) + 1);
    return PlainScriptText(std::string(strEvent));
}

bool ShowsAnything(AVCodecID id, const AVPacket &packet)
{
    if (id == AV_CODEC_ID_MOV_TEXT)
        return !MovText(Payload(packet)).empty();
    return packet.size > 0;
}
