#include "parsers/srtparser.h"
#include "support/assparserpeer.h"
#include "support/plainass.h"
#include "support/plainsrt.h"
#include "support/scriptwriter.h"
#include "support/srtparserpeer.h"
#include "support/temporaryfolder.h"

#include <climits>
#include <gtest/gtest.h>
#include <sstream>

namespace
{

constexpr int ScriptCount = 4000;

/** The text with all units but printable ASCII escaped, so that none is lost in messages. */
std::string Escaped(const std::u16string &text)
{
    std::ostringstream out;
    for (const char16_t unit : text) {
        if (unit >= 0x20 && unit < 0x7F)
            out << static_cast<char>(unit);
        else
            out << "\\u" << std::hex << static_cast<unsigned>(unit) << ';';
    }
    return out.str();
}

std::string Escaped(const QString &text)
{
    return Escaped(text.toStdU16String());
}

std::string Number(double value)
{
    return QString::number(value, 'g', 17).toStdString();
}

/** For the parser's items and the plain reader's. */
template <typename Item>
std::string EventString(const Item &item)
{
    std::ostringstream out;
    out << item.nLayer << ' ' << item.nStart << ' ' << item.nEnd << " [" << Escaped(item.strStyle) << "] ["
        << Escaped(item.strActor) << "] [" << Escaped(item.strEffect) << "] [" << Escaped(item.strText) << ']';
    return out.str();
}

template <typename Items>
std::vector<std::string> EventStrings(const Items &items)
{
    std::vector<std::string> strings;
    for (const auto &item : items)
        strings.push_back(EventString(item));
    return strings;
}

PlainAssMembers Members(const AssParserPeer &peer)
{
    PlainAssMembers m;
    m.strCollisions = peer.Collisions().toStdU16String();
    m.nPlayResX = peer.PlayResX();
    m.nPlayResY = peer.PlayResY();
    m.nMargin = {peer.Margin().left(), peer.Margin().top(), peer.Margin().right(), peer.Margin().bottom()};
    m.nColors = peer.Colors();
    m.nAlpha = {peer.Alpha()[0], peer.Alpha()[1], peer.Alpha()[2], peer.Alpha()[3]};
    m.strFontName = peer.FontName().toStdU16String();
    m.dFontSize = peer.FontSize();
    m.nBold = peer.Bold();
    m.bItalic = peer.Italic();
    m.bUnderline = peer.Underline();
    m.bStrikeOut = peer.StrikeOut();
    m.dScaleX = peer.ScaleX();
    m.dScaleY = peer.ScaleY();
    m.dSpacing = peer.Spacing();
    m.dAngleZ = peer.AngleZ();
    m.dAngleX = peer.AngleX();
    m.dAngleY = peer.AngleY();
    m.nBorderStyle = peer.BorderStyle();
    m.dOutline = peer.Outline();
    m.dShadow = peer.Shadow();
    m.nAlignment = peer.Alignment();
    m.nCharset = peer.Charset();
    return m;
}

std::string MembersString(const PlainAssMembers &m)
{
    std::ostringstream out;
    out << "collisions [" << Escaped(m.strCollisions) << "] resolution " << m.nPlayResX << ' ' << m.nPlayResY;
    out << " font [" << Escaped(m.strFontName) << "] " << Number(m.dFontSize) << " colors";
    for (int i = 0; i < 4; ++i)
        out << ' ' << m.nColors[i] << '/' << m.nAlpha[i];
    out << " margin";
    for (const int margin : m.nMargin)
        out << ' ' << margin;
    out << " bold " << m.nBold << " italic " << m.bItalic << " underline " << m.bUnderline << " strike-out "
        << m.bStrikeOut << " scale " << Number(m.dScaleX) << ' ' << Number(m.dScaleY) << " spacing "
        << Number(m.dSpacing) << " angles " << Number(m.dAngleZ) << ' ' << Number(m.dAngleX) << ' ' << Number(m.dAngleY)
        << " border " << m.nBorderStyle << ' ' << Number(m.dOutline) << ' ' << Number(m.dShadow) << " alignment "
        << m.nAlignment << " charset " << m.nCharset;
    return out.str();
}

/** Compares the texts due at the edges of all items, at random and out of range. Without one it must be null. */
template <typename Item>
void ExpectSameLookups(IParser &parser, const std::vector<Item> &items, ScriptWriter &writer)
{
    std::vector<long> times = {LONG_MIN, -1, 0, 1, INT_MAX, LONG_MAX};
    for (const Item &item : items) {
        for (const long edge : {item.nStart, item.nEnd})
            times.insert(times.end(), {edge - 1, edge, edge + 1});
    }
    for (int i = 0; i < 10; ++i)
        times.push_back(writer.Below(11000));
    for (const long ms : times) {
        const QString text = parser.GetSubtitle(ms);
        const auto expected = FindDuePlainly(items, ms);
        ASSERT_EQ(Escaped(text), Escaped(expected.value_or(u""))) << "at " << ms;
        if (!expected) {
            ASSERT_TRUE(text.isNull()) << "at " << ms;
        }
    }
}

class RandomScripts : public testing::Test
{
protected:
    QString Write(const std::string &bytes)
    {
        // Some file systems write a file to the disk at once when it was truncated and rewritten, which is slow.
        std::filesystem::remove(m_folder.Path() / "script");
        return QString::fromStdString(m_folder.Write("script", bytes));
    }

    TemporaryFolder m_folder;
};

} // namespace

TEST_F(RandomScripts, AssScriptsReadAsPlainly)
{
    ScriptWriter writer(1);
    AssParser parser;
    const AssParserPeer peer(parser);
    PlainAss plain;
    int events = 0;
    for (int i = 0; i < ScriptCount; ++i) {
        const std::string bytes = writer.Ass();
        SCOPED_TRACE("script " + std::to_string(i) + ":\n" + bytes);
        ASSERT_EQ(parser.Open(Write(bytes), static_cast<int>(writer.Below(3))), 1);
        plain.Read(LinesPlainly(bytes));
        ASSERT_EQ(EventStrings(peer.Items()), EventStrings(plain.m_listItems));
        ASSERT_EQ(MembersString(Members(peer)), MembersString(plain.m_members));
        for (const AssSubtitleItem &item : peer.Items())
            ASSERT_EQ(item.rcMargin, QRect());
        ASSERT_TRUE(peer.Reserved().isNull());
        ASSERT_NO_FATAL_FAILURE(ExpectSameLookups(parser, plain.m_listItems, writer));
        events += peer.Items().size();
    }
    EXPECT_GT(events, ScriptCount);
}

TEST_F(RandomScripts, SrtScriptsReadAsPlainly)
{
    ScriptWriter writer(2);
    SrtParser parser;
    int cues = 0;
    for (int i = 0; i < ScriptCount; ++i) {
        const std::string bytes = writer.Srt();
        SCOPED_TRACE("script " + std::to_string(i) + ":\n" + bytes);
        ASSERT_NE(parser.Open(Write(bytes), static_cast<int>(writer.Below(3))), 0);
        const auto items = ReadSrtPlainly(LinesPlainly(bytes));
        const SrtParserPeer peer(parser);
        const QList<SrtSubtitleItem> &parsed = peer.Items();
        ASSERT_EQ(static_cast<std::size_t>(parsed.size()), items.size());
        for (std::size_t n = 0; n < items.size(); ++n) {
            ASSERT_EQ(parsed[static_cast<int>(n)].nStart, items[n].nStart);
            ASSERT_EQ(parsed[static_cast<int>(n)].nEnd, items[n].nEnd);
            ASSERT_EQ(parsed[static_cast<int>(n)].strText.toStdU16String(), items[n].strText);
        }
        ASSERT_NO_FATAL_FAILURE(ExpectSameLookups(parser, items, writer));
        for (const PlainSrtItem &item : items)
            cues += item.nStart <= item.nEnd && !item.strText.empty() ? 1 : 0;
    }
    EXPECT_GT(cues, ScriptCount);
}

TEST_F(RandomScripts, SrtTimesReadAsPlainly)
{
    ScriptWriter writer(3);
    for (int i = 0; i < 10 * ScriptCount; ++i) {
        if (i % 16 == 0)
            writer.Srt(); // decides anew how wild the times are
        const QString time = QString::fromStdString(writer.SrtTime());
        ASSERT_EQ(ParseTime(time), ParseTimePlainly(time.toStdU16String())) << time.toStdString();
    }
}

TEST_F(RandomScripts, TagsGoAsPlainly)
{
    ScriptWriter writer(4);
    AssParser parser;
    for (int i = 0; i < 10 * ScriptCount; ++i) {
        const QString text = QString::fromStdString(writer.Text() + writer.Text());
        ASSERT_EQ(Escaped(parser.RemoveSSATags(text)), Escaped(RemoveTagsPlainly(text.toStdU16String())))
            << text.toStdString();
    }
}
