#include "support/assparsertest.h"

#include "parsers/parsermanager.h"

#include <climits>
#include <cmath>

using namespace std::string_literals;

namespace
{

const char Utf8Mark[] = "\xEF\xBB\xBF";

/** A script of the newer layout with one event, from 1000 to 2000 ms. */
std::string Script(const std::string &text)
{
    return "ScriptType: v4.00+\nDialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,," + text + "\n";
}

/** A line, the value that a field reader takes from its front, and the rest that it leaves. */
template <typename Value>
struct Cut {
    const char16_t *line;
    Value value;
    const char16_t *rest;
};

/** Every number is its field's position, so that a stored value shows which field it came from. */
const char NumberedStyle[] = "Style: Name,Font,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24\n";

/** The style version whose layout the numbered style was read in; 0 for none. */
int StyleVersion(const AssParserPeer &peer)
{
    return peer.Outline() == 17 ? 5 : peer.Outline() == 11 ? 4 : peer.Outline() == 10 ? 3 : 0;
}

/** The members except the events, in one string. */
std::string Members(const AssParserPeer &peer)
{
    const std::vector<double> numbers = {double(peer.PlayResX()),
                                         double(peer.PlayResY()),
                                         double(peer.Margin().left()),
                                         double(peer.Colors()[0]),
                                         double(peer.Alpha()[0]),
                                         double(peer.Charset()),
                                         double(peer.Bold()),
                                         double(peer.Alignment()),
                                         double(peer.BorderStyle()),
                                         peer.FontSize(),
                                         peer.ScaleX(),
                                         peer.Outline(),
                                         double(peer.Italic()),
                                         double(peer.Collisions().size())};
    std::string all = peer.FontName().toStdString() + peer.Reserved().toStdString();
    for (const double number : numbers)
        all += ' ' + std::to_string(number);
    return all;
}

} // namespace

TEST(TrimLeft, RemovesTheLeadingRunOfExactlyThatCharacter)
{
    const auto trim = [](const char16_t *text, char character) {
        return TrimLeft(QString::fromUtf16(text), QLatin1Char(character)).toStdString();
    };
    EXPECT_EQ(trim(u"***a*b*", '*'), "a*b*");
    EXPECT_EQ(trim(u"a**", '*'), "a**");
    EXPECT_EQ(trim(u"Aab", 'a'), "Aab");
    EXPECT_EQ(trim(u" * a", '*'), " * a");
    EXPECT_EQ(trim(u"***", '*'), "");
    EXPECT_EQ(trim(u"", '*'), "");
    EXPECT_EQ(TrimLeft(QStringLiteral("ééx"), QChar(0xE9)).toStdString(), "x");
}

TEST_F(AssParserTest, GetStrCutsTheNextField)
{
    const Cut<const char16_t *> cuts[] = {
        {u"a,b,c", u"a", u"b,c"},  {u"   a,b", u"a", u"b"}, {u"a  , b", u"a  ", u" b"}, {u"\t a,b", u"\t a", u"b"},
        {u" \ta,b", u"\ta", u"b"}, {u",b", u"", u"b"},      {u"  ,b", u"", u"b"},       {u"a,", u"a", u""},
        {u"", u"", u""},           {u"   ", u"", u""},
    };
    for (const auto &[line, field, rest] : cuts) {
        QString left = QString::fromUtf16(line);
        EXPECT_EQ(m_parser.GetStr(left, ',').toStdString(), QString::fromUtf16(field).toStdString());
        EXPECT_EQ(left.toStdString(), QString::fromUtf16(rest).toStdString());
    }
}

TEST_F(AssParserTest, GetStrDoesNotConsumeTheRestWhereTheSeparatorIsMissing)
{
    QString line = QStringLiteral("  last b ");
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(m_parser.GetStr(line, ',').toStdString(), "last b ");
        EXPECT_EQ(line.toStdString(), "last b ");
    }
}

TEST_F(AssParserTest, GetStrMindsTheCaseOfTheSeparator)
{
    QString line = QStringLiteral("aXbxc");
    EXPECT_EQ(m_parser.GetStr(line, 'x').toStdString(), "aXb");
    EXPECT_EQ(line.toStdString(), "c");
}

TEST_F(AssParserTest, GetIntReadsDecimalAndHexadecimalNumbers)
{
    const Cut<int> cuts[] = {
        {u"640,5", 640, u"5"},
        {u"  -7,x", -7, u"x"},
        {u"+7,x", 7, u"x"},
        {u"0007,", 7, u""},
        {u"2147483647,", INT_MAX, u""},
        {u"-2147483648,", INT_MIN, u""},
        {u"2147483648,", -1, u""},
        {u"1.5,", -1, u""},
        {u"1e3,", -1, u""},
        {u"abc,d", -1, u"d"},
        {u",d", -1, u"d"},
        {u"FF,", -1, u""},
        {u"&HFF,x", 255, u"x"},
        {u"&hfF,x", 255, u"x"},
        {u"&H00FF8040,", 0xFF8040, u""},
        {u"&H7FFFFFFF,", INT_MAX, u""},
        {u"&H80000000,", -1, u""},
        {u"&HFFFFFFFF,", -1, u""},
        {u"&HFF&,", -1, u""},
        {u"&HFG,", -1, u""},
        {u"&H,", -1, u""},
        {u"&,", -1, u""},
        {u"H10,", -1, u""},
        {u"12", 12, u"12"},
        {u"  &H10", 16, u"&H10"},
    };
    for (const auto &[line, number, rest] : cuts) {
        QString left = QString::fromUtf16(line);
        EXPECT_EQ(m_parser.GetInt(left, ','), number) << QString::fromUtf16(line).toStdString();
        EXPECT_EQ(left.toStdString(), QString::fromUtf16(rest).toStdString());
    }
}

TEST_F(AssParserTest, GetFloatReadsNumbers)
{
    const Cut<double> cuts[] = {
        {u"1.5,x", 1.5, u"x"}, {u"  -2,x", -2.0, u"x"}, {u"1e3,", 1000.0, u""},
        {u".5,", 0.5, u""},    {u"abc,d", -1.0, u"d"},  {u",d", -1.0, u"d"},
        {u"&H10,", -1.0, u""}, {u"1.5pt,", -1.0, u""},  {u" 12.25", 12.25, u"12.25"},
    };
    for (const auto &[line, number, rest] : cuts) {
        QString left = QString::fromUtf16(line);
        EXPECT_EQ(m_parser.GetFloat(left, ','), number) << QString::fromUtf16(line).toStdString();
        EXPECT_EQ(left.toStdString(), QString::fromUtf16(rest).toStdString());
    }
}

TEST_F(AssParserTest, StartsEmpty)
{
    EXPECT_TRUE(m_peer.Items().isEmpty());
    EXPECT_TRUE(m_peer.Reserved().isNull());
    EXPECT_TRUE(m_peer.Collisions().isNull());
    EXPECT_TRUE(m_peer.FontName().isNull());
    EXPECT_EQ(m_peer.Margin(), QRect());
    EXPECT_EQ(m_peer.Margin().right(), -1);
    EXPECT_TRUE(m_parser.GetSubtitle(1).isNull());
}

TEST_F(AssParserTest, DoesNothingAboutPictures)
{
    Open(Script("text"));
    QRect rect(1, 2, 3, 4);
    m_parser.SetVideoSize(1, 1);
    EXPECT_TRUE(m_parser.IsTextSub());
    EXPECT_TRUE(m_parser.TextToImage(QStringLiteral("0"), rect).isNull());
    EXPECT_EQ(rect, QRect(1, 2, 3, 4));
    EXPECT_EQ(At(1500), "text");
}

TEST_F(AssParserTest, IgnoresTheTrack)
{
    const QString path = QString::fromStdString(m_folder.Write("file.ass", Script("text")));
    for (const int track : {INT_MIN, -1, 1, INT_MAX}) {
        EXPECT_EQ(m_parser.Open(path, track), 1);
        EXPECT_EQ(m_peer.Items().size(), 1);
    }
}

TEST_F(AssParserTest, OpensMissingUnreadableAndEmptyFiles)
{
    const QString folder = QString::fromStdString(m_folder.Path().string());
    const QString empty = QString::fromStdString(m_folder.Write("empty.ass", ""));
    for (const QString &path : {folder + QStringLiteral("/missing.ass"), folder, empty}) {
        Open(Script("text"));
        EXPECT_EQ(m_parser.Open(path, 0), 1);
        EXPECT_TRUE(m_peer.Items().isEmpty());
        EXPECT_TRUE(m_parser.GetSubtitle(1500).isNull());
    }
}

TEST_F(AssParserTest, IsChosenByBothExtensions)
{
    ParserManager manager;
    for (const char *name : {"a.ass", "b.ssa", "c.ASS", "d.Ssa"}) {
        const std::string text = "{\\b1}"s + name;
        EXPECT_NE(manager.Open(QString::fromStdString(m_folder.Write(name, Script(text))), 0), 0);
        EXPECT_EQ(manager.GetSubtitle(1500).toStdString(), name);
        EXPECT_TRUE(manager.IsTextSub());
    }
    EXPECT_NE(manager.Open(QStringLiteral("/nonexistent/file.ssa"), 0), 0);
    EXPECT_TRUE(manager.GetSubtitle(1500).isNull());
}

TEST_F(AssParserTest, ReadsMarkedEncodings)
{
    Open(Utf8Mark + Script("Grüße, мир, 😀"));
    EXPECT_EQ(At(1500), "Grüße, мир, 😀");

    std::string utf16 = "\xFF\xFE";
    for (const QChar unit : QString::fromStdString(Script("Grüße, мир, 😀"))) {
        utf16 += static_cast<char>(unit.cell());
        utf16 += static_cast<char>(unit.row());
    }
    Open(utf16);
    EXPECT_EQ(m_peer.Items().size(), 1);
    EXPECT_EQ(At(1500), "Grüße, мир, 😀");
}

TEST_F(AssParserTest, LineEndsMayBeOfEitherKindAndTheLastMayBeMissing)
{
    Open("ScriptType: v4.00+\r\nPlayResX: 1\r\nDialogue: 0,0:00:01.00,0:00:02.00,S,,0,0,0,,a\r\n"
         "Dialogue: 0,0:00:03.00,0:00:04.00,S,,0,0,0,,b");
    EXPECT_EQ(m_peer.PlayResX(), 1);
    EXPECT_EQ(m_peer.Items().size(), 2);
    EXPECT_EQ(At(1500), "a");
    EXPECT_EQ(At(3500), "b");
}

TEST_F(AssParserTest, TrimsLines)
{
    Open(" \t PlayResX: 640 \t\r\n\tScriptType: v4.00+\t \n  Dialogue: 3,0:00:01.00,0:00:02.00,S,,0,0,0,,a  \t\n");
    EXPECT_EQ(m_peer.PlayResX(), 640);
    ASSERT_EQ(m_peer.Items().size(), 1);
    EXPECT_EQ(m_peer.Items()[0].nLayer, 3);
    EXPECT_EQ(At(1500), "a");
}

TEST_F(AssParserTest, SkipsCommentsAndBlankLines)
{
    Open("\n   \n\t\n;PlayResX: 1\n   ;PlayResX: 2\n \t; PlayResX: 3\n!: PlayResX: 4\n"
         "Comment: 0,0:00:01.00,0:00:02.00,S,,0,0,0,,a\n");
    EXPECT_EQ(m_peer.PlayResX(), 0);
    EXPECT_TRUE(m_peer.Items().isEmpty());
}

TEST_F(AssParserTest, KeysMatchWholeAndInAnyCase)
{
    Open("PLAYRESX:7\nplayresy:8\n");
    EXPECT_EQ(m_peer.PlayResX(), 7);
    EXPECT_EQ(m_peer.PlayResY(), 8);
    Open("PlayResX : 1\nPlayResX\t: 1\nPlayRes: 1\nPlayResXY: 1\nA PlayResX: 1\n[PlayResX]: 1\nStyle : N,F,1\n"
         "Dialogue : 0,0:00:01.00,0:00:02.00,S,,0,0,0,,a\n");
    EXPECT_EQ(m_peer.PlayResX(), 7);
    EXPECT_TRUE(m_peer.FontName().isNull());
    EXPECT_TRUE(m_peer.Items().isEmpty());
}

TEST_F(AssParserTest, LineThatIsAKeyAloneIsItsOwnValue)
{
    Open("PlayResX\nCollisions\nScriptType\nStyle\nDialogue\n");
    EXPECT_EQ(m_peer.PlayResX(), -1);
    EXPECT_EQ(m_peer.Collisions(), QString(QChar(0)));
    EXPECT_EQ(m_peer.FontName().toStdString(), "Style");
    ASSERT_EQ(m_peer.Items().size(), 1);
    EXPECT_EQ(m_peer.Items()[0].strText.toStdString(), "Dialogue");
}

TEST_F(AssParserTest, ReadsThePlayResolution)
{
    const std::pair<const char *, int> values[] = {{"640", 640},  {" 640", 640}, {"abc", -1}, {" 640, 5", 640},
                                                   {"", -1},      {"&H10", 16},  {"-5", -5},  {"640:5", -1},
                                                   {"640 5", -1}, {",640", -1}};
    for (const auto &[value, number] : values) {
        Open("PlayResX:"s + value + "\n");
        EXPECT_EQ(m_peer.PlayResX(), number) << value;
        Open("PlayResY:"s + value + "\n");
        EXPECT_EQ(m_peer.PlayResY(), number) << value;
    }
}

TEST_F(AssParserTest, KeysThatAreKnownButIgnoredChangeNothing)
{
    Open("PlayResX: 5\n"s + NumberedStyle);
    const std::string before = Members(m_peer);
    Open("WrapStyle: 2\nScaledBorderAndShadow: yes\nTimer: 100\nTitle: x\n[Script Info]\n[Events]\n[Fonts]\n");
    EXPECT_EQ(Members(m_peer), before);
    EXPECT_TRUE(m_peer.Items().isEmpty());
}

TEST_F(AssParserTest, KeysCountInEverySection)
{
    Open("Dialogue: Marked=0,0:00:01.00,0:00:02.00,S,,0,0,0,,a\n[Fonts]\nPlayResX: 1\n[Events]\n"s + NumberedStyle +
         "[Script Info]\nDialogue: Marked=0,0:00:03.00,0:00:04.00,S,,0,0,0,,b\n");
    EXPECT_EQ(At(1500), "a");
    EXPECT_EQ(At(3500), "b");
    EXPECT_EQ(m_peer.PlayResX(), 1);
    EXPECT_EQ(StyleVersion(m_peer), 3);
}

TEST_F(AssParserTest, FormatLinesAreIgnored)
{
    Open("ScriptType: v4.00+\nFormat: Text, Start, End\nDialogue: 0,0:00:01.00,0:00:02.00,S,,0,0,0,,a\n");
    EXPECT_EQ(At(1500), "a");
}

TEST_F(AssParserTest, CollisionsAreOneControlCharacter)
{
    const std::pair<const char *, int> values[] = {{" Reverse", 1},        {" Normal", 0}, {"REVERSE", 1},
                                                   {"non-reversed", 1},    {"", 0},        {" Normal, Reverse", 0},
                                                   {"Reverse, Normal", 1}, {" revers", 0}, {"rev erse", 0}};
    for (const auto &[value, code] : values) {
        Open("Collisions:"s + value + "\n");
        ASSERT_EQ(m_peer.Collisions().size(), 1);
        EXPECT_EQ(m_peer.Collisions()[0].unicode(), code) << value;
    }
}

TEST_F(AssParserTest, ScriptTypeSetsBothVersions)
{
    struct Case {
        const char *line;
        int version;
    };
    const Case cases[] = {
        {"ScriptType: v4.00+", 5},  {"ScriptType: v4.00", 4},   {"scripttype:4.00+", 5},    {"SCRIPTTYPE:4.00", 4},
        {"ScriptType: 4", 3},       {"ScriptType: v4.0", 3},    {"ScriptType: v4.00++", 3}, {"ScriptType: v4.00 +", 3},
        {"ScriptType: V4.00+", 5},  {"ScriptType: x:4.00+", 5}, {"ScriptType: 14.00", 4},   {"ScriptType : v4.00+", 3},
        {"ScriptType: v4.00+ ", 5}, {"ScriptType: v4,00+", 3},  {"ScriptType:", 3},         {"", 3},
    };
    for (const auto &[line, version] : cases) {
        Open(line + "\n"s + NumberedStyle + "Dialogue: 7,0:00:01.00,0:00:02.00,S,,0,0,0,,a\n");
        EXPECT_EQ(StyleVersion(m_peer), version) << line;
        ASSERT_EQ(m_peer.Items().size(), 1);
        EXPECT_EQ(m_peer.Items()[0].nLayer, version == 5 ? 7 : 0) << line;
    }
}

TEST_F(AssParserTest, StyleHeadersSetTheStyleVersionAlone)
{
    const std::pair<const char *, int> headers[] = {{"[V4+ Styles]", 5},  {"[v4+ styles]", 5},    {"[V4+ STYLES]", 5},
                                                    {"[V4 Styles]", 4},   {"[v4 stYles]", 4},     {"[V4++ Styles]", 3},
                                                    {"[V4+  Styles]", 3}, {"[V4+ Styles]: x", 5}, {"V4+ Styles", 3}};
    for (const auto &[header, version] : headers) {
        Open(header + "\n"s + NumberedStyle + "Dialogue: 7,0:00:01.00,0:00:02.00,S,,0,0,0,,a\n");
        EXPECT_EQ(StyleVersion(m_peer), version) << header;
        ASSERT_EQ(m_peer.Items().size(), 1);
        EXPECT_EQ(m_peer.Items()[0].nLayer, 0) << header;
        EXPECT_EQ(m_peer.Items()[0].nStart, 1000) << header;
    }
}

TEST_F(AssParserTest, LastVersionCounts)
{
    Open("[V4+ Styles]\nScriptType: v4.00\n"s + NumberedStyle);
    EXPECT_EQ(StyleVersion(m_peer), 4);
    Open("ScriptType: v4.00+\n[V4 Styles]\n"s + NumberedStyle + "Dialogue: 7,0:00:01.00,0:00:02.00,S,,0,0,0,,a\n" +
         "ScriptType: v4.00\nDialogue: 8,0:00:01.00,0:00:02.00,S,,0,0,0,,b\n");
    EXPECT_EQ(StyleVersion(m_peer), 4);
    ASSERT_EQ(m_peer.Items().size(), 2);
    EXPECT_EQ(m_peer.Items()[0].nLayer, 7);
    EXPECT_EQ(m_peer.Items()[1].nLayer, 0);
}

TEST_F(AssParserTest, SecondOpenStartsAtTheOldestVersionAndKeepsTheRest)
{
    Open("PlayResX: 1\nPlayResY: 2\nCollisions: Reverse\nScriptType: v4.00+\n"s + NumberedStyle + Script("text"));
    const std::string before = Members(m_peer);
    Open("Dialogue: 7,0:00:03.00,0:00:04.00,S,,0,0,0,,new\n");
    ASSERT_EQ(m_peer.Items().size(), 1);
    EXPECT_EQ(m_peer.Items()[0].nLayer, 0);
    EXPECT_TRUE(m_parser.GetSubtitle(1500).isNull());
    EXPECT_EQ(At(3500), "new");
    EXPECT_EQ(Members(m_peer), before);
    EXPECT_EQ(m_peer.PlayResY(), 2);
    EXPECT_EQ(m_peer.Collisions(), QString(QChar(1)));
    Open(NumberedStyle);
    EXPECT_EQ(StyleVersion(m_peer), 3);
}
