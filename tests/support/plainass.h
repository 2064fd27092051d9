#pragma once

#include "support/plaintext.h"

#include <array>

struct PlainAssItem {
    int nLayer = 0;
    int nStart = 0;
    int nEnd = 0;
    std::u16string strText;
    std::u16string strStyle;
    std::u16string strActor;
    std::u16string strEffect;
};

/** The members of an AssParser that a script sets, apart from the events. */
struct PlainAssMembers {
    std::u16string strCollisions;
    int nPlayResX = 0;
    int nPlayResY = 0;
    std::array<int, 4> nMargin = {0, 0, -1, -1}; ///< left, top, right, bottom
    std::array<int, 4> nColors = {};
    std::array<int, 4> nAlpha = {};
    std::u16string strFontName;
    double dFontSize = 0;
    int nBold = 0;
    int bItalic = 0;
    int bUnderline = 0;
    int bStrikeOut = 0;
    double dScaleX = 0;
    double dScaleY = 0;
    double dSpacing = 0;
    double dAngleZ = 0;
    double dAngleX = 0;
    double dAngleY = 0;
    int nBorderStyle = 0;
    double dOutline = 0;
    double dShadow = 0;
    int nAlignment = 0;
    int nCharset = 0;
};

/** Does the same as QString::indexOf(): a negative start counts from the end. */
inline int FindPlainly(const std::u16string &text, char16_t wanted, int from)
{
    const int length = static_cast<int>(text.size());
    if (from < 0) {
        from = length + from;
        if (from < 0)
            from = 0;
    }
    for (int i = from; i < length; ++i) {
        if (text[i] == wanted)
            return i;
    }
    return -1;
}

/** Does the same as AssParser::RemoveSSATags(): the search for '<' starts where the search for '{' ended. */
inline std::u16string RemoveTagsPlainly(std::u16string text)
{
    int position = 0;
    for (;;) {
        const int open = FindPlainly(text, u'{', position);
        if (open == -1) {
            position = -1;
            break;
        }
        position = open;
        const int close = FindPlainly(text, u'}', open);
        if (close == -1)
            break;
        text.erase(open, close - open + 1);
    }
    for (;;) {
        const int open = FindPlainly(text, u'<', position);
        if (open == -1)
            break;
        const int close = FindPlainly(text, u'>', open);
        if (close == -1)
            break;
        text.erase(open, close - open + 1);
        position = open;
    }
    std::u16string result;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == u'\\' && i + 1 < text.size() && text[i + 1] == u'N') {
            result += u'\n';
            ++i;
        } else {
            result += text[i];
        }
    }
    return result;
}

/** A line that is split into fields. */
class PlainFields
{
public:
    explicit PlainFields(std::u16string rest) : m_strRest(std::move(rest)) {}

    const std::u16string &Rest() const { return m_strRest; }

    std::u16string Str(char16_t separator)
    {
        while (!m_strRest.empty() && m_strRest[0] == u' ')
            m_strRest.erase(0, 1);
        std::u16string field;
        for (std::size_t i = 0; i < m_strRest.size(); ++i) {
            if (m_strRest[i] == separator) {
                m_strRest = m_strRest.substr(i + 1);
                return field;
            }
            field += m_strRest[i];
        }
        return field;
    }

    int Int(char16_t separator)
    {
        const std::u16string field = LowerPlainly(Str(separator));
        if (field.size() >= 2 && field[0] == u'&' && field[1] == u'h')
            return IntPlainly(field.substr(2), 16).value_or(-1);
        return IntPlainly(field).value_or(-1);
    }

    double Float(char16_t separator) { return DoublePlainly(Str(separator)).value_or(-1.0); }

    int Time()
    {
        const std::int64_t hours = Int(u':');
        const std::int64_t minutes = Int(u':');
        const std::int64_t seconds = Int(u'.');
        const std::int64_t hundredths = Int(u',');
        return Wrap32Plainly(((hours * 60 + minutes) * 60 + seconds) * 1000 + hundredths * 10);
    }

private:
    std::u16string m_strRest;
};

/** Reads scripts one after the other, like one parser that opens several files. */
class PlainAss
{
public:
    std::vector<PlainAssItem> m_listItems;
    PlainAssMembers m_members;

    void Read(const std::vector<std::u16string> &lines)
    {
        m_listItems.clear();
        m_nEventVersion = 3;
        m_nStyleVersion = 3;
        for (const std::u16string &line : lines)
            ReadLine(TrimPlainly(line));
    }

private:
    void ReadLine(const std::u16string &line)
    {
        if (line.empty() || line[0] == u';')
            return;
        PlainFields fields(line);
        const std::u16string key = LowerPlainly(fields.Str(u':'));
        if (key == u"playresx")
            m_members.nPlayResX = fields.Int(u',');
        if (key == u"playresy")
            m_members.nPlayResY = fields.Int(u',');
        if (key == u"scripttype")
            ReadVersion(fields.Rest());
        if (key == u"collisions") {
            const bool reverse = LowerPlainly(fields.Str(u',')).find(u"reverse") != std::u16string::npos;
            m_members.strCollisions = std::u16string(1, reverse ? u'\1' : u'\0');
        }
        if (key == u"[v4 styles]")
            m_nStyleVersion = 4;
        if (key == u"[v4+ styles]")
            m_nStyleVersion = 5;
        if (key == u"style")
            ReadStyle(fields);
        if (key == u"dialogue")
            ReadDialogue(fields);
    }

    void ReadVersion(const std::u16string &value)
    {
        if (value.size() > 3 && value.substr(value.size() - 4) == u"4.00") {
            m_nEventVersion = 4;
            m_nStyleVersion = 4;
        } else if (value.size() > 4 && value.substr(value.size() - 5) == u"4.00+") {
            m_nEventVersion = 5;
            m_nStyleVersion = 5;
        }
    }

    void ReadStyle(PlainFields &fields)
    {
        PlainAssMembers &m = m_members;
        const int v = m_nStyleVersion;
        fields.Str(u',');
        m.strFontName = fields.Str(u',');
        m.dFontSize = fields.Float(u',');
        m.nColors[0] = fields.Int(u',');
        m.nColors[1] = fields.Int(u',');
        m.nColors[2] = fields.Int(u',');
        m.nColors[3] = fields.Int(u',');
        m.nBold = fields.Int(u',');
        m.bItalic = fields.Int(u',') != 0 ? 1 : 0;
        if (v >= 5) {
            m.bUnderline = fields.Int(u',') != 0 ? 1 : 0;
            m.bStrikeOut = fields.Int(u',') != 0 ? 1 : 0;
            m.dScaleX = fields.Float(u',');
            m.dScaleY = fields.Float(u',');
            m.dSpacing = fields.Float(u',');
            m.dAngleZ = fields.Float(u',');
        }
        if (v >= 4)
            m.nBorderStyle = fields.Int(u',');
        m.dOutline = fields.Float(u',');
        m.dShadow = fields.Float(u',');
        m.nAlignment = fields.Int(u',');
        m.nMargin[0] = fields.Int(u',');
        m.nMargin[2] = fields.Int(u',');
        m.nMargin[1] = m.nMargin[3] = fields.Int(u',');
        int alphaLevel = 0;
        if (v <= 4)
            alphaLevel = fields.Int(u',');
        m.nCharset = fields.Int(u',');
        if (v >= 5)
            FinishNewStyle();
        else
            FinishOldStyle(alphaLevel);
        m.dAngleX = 0.0;
        m.dAngleY = 0.0;
        m.nBorderStyle = m.nBorderStyle == 3 ? 1 : 0;
        ClampPlainly(m.dOutline);
        ClampPlainly(m.dShadow);
    }

    void FinishNewStyle()
    {
        for (int i = 0; i < 4; ++i) {
            const std::int64_t color = m_members.nColors[i];
            const std::int64_t bits = color < 0 ? color + 0x100000000 : color;
            m_members.nAlpha[i] = static_cast<int>(bits / 0x1000000);
            m_members.nColors[i] = static_cast<int>(bits % 0x1000000);
        }
        ClampPlainly(m_members.dScaleX);
        ClampPlainly(m_members.dScaleY);
        ClampPlainly(m_members.dSpacing);
    }

    void FinishOldStyle(int alphaLevel)
    {
        PlainAssMembers &m = m_members;
        m.nColors[2] = m.nColors[3];
        if (alphaLevel > 254)
            alphaLevel = 255;
        if (alphaLevel < 0)
            alphaLevel = 0;
        m.nAlpha = {alphaLevel, alphaLevel, alphaLevel, 128};

        const std::int64_t alignment = m.nAlignment;
        const std::int64_t bits = alignment < 0 ? alignment + 0x100000000 : alignment;
        const int column = static_cast<int>(bits % 4);
        if (bits / 4 % 2 == 1)
            m.nAlignment = column + 6;
        else if (bits / 8 % 2 == 1)
            m.nAlignment = column + 3;
        else
            m.nAlignment = column;
    }

    static void ClampPlainly(double &value)
    {
        if (!(value >= 0.0))
            value = 0.0;
    }

    void ReadDialogue(PlainFields &fields)
    {
        PlainAssItem item;
        if (m_nEventVersion <= 4) {
            fields.Str(u'=');
            fields.Int(u',');
        } else {
            item.nLayer = fields.Int(u',');
        }
        item.nStart = fields.Time();
        item.nEnd = fields.Time();
        item.strStyle = fields.Str(u',');
        item.strActor = fields.Str(u',');
        for (int margin = 0; margin < 3; ++margin)
            fields.Str(u',');
        item.strEffect = fields.Str(u',');
        const std::u16string &text = fields.Rest();
        bool sameStart = true;
        for (std::size_t i = 0; i < text.size() && i < item.strEffect.size(); ++i)
            sameStart = sameStart && text[i] == item.strEffect[i];
        if (sameStart)
            item.strEffect.clear();
        while (!item.strStyle.empty() && item.strStyle[0] == u'*')
            item.strStyle.erase(0, 1);
        if (LowerPlainly(item.strStyle) == u"default")
            item.strStyle = u"Default";
        item.strText = RemoveTagsPlainly(text);
        m_listItems.push_back(item);
    }

    int m_nEventVersion = 3;
    int m_nStyleVersion = 3;
};
