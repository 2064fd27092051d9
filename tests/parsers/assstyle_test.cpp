#include "support/assparsertest.h"

#include <climits>
#include <cmath>
#include <sstream>

using namespace std::string_literals;

namespace
{

/** Members of a style that older layouts do not have. */
std::vector<double> NewerMembers(const AssParserPeer &peer)
{
    return {double(peer.Underline()),
            double(peer.StrikeOut()),
            peer.ScaleX(),
            peer.ScaleY(),
            peer.Spacing(),
            peer.AngleZ()};
}

std::array<int, 4> Alpha(const AssParserPeer &peer)
{
    const auto &alpha = peer.Alpha();
    return {alpha[0], alpha[1], alpha[2], alpha[3]};
}

/** Members of a style that all layouts have, in words. The margin is left, top, right, bottom. */
std::string Style(const AssParserPeer &peer)
{
    std::ostringstream text;
    text << peer.FontName().toStdString() << ' ' << peer.FontSize() << "; colors" << std::hex;
    for (int color : peer.Colors())
        text << ' ' << color;
    text << std::dec << "; alpha";
    for (int alpha : Alpha(peer))
        text << ' ' << alpha;
    text << "; bold " << peer.Bold() << ", italic " << peer.Italic() << "; border " << peer.BorderStyle()
         << ", outline " << peer.Outline() << ", shadow " << peer.Shadow() << "; alignment " << peer.Alignment();
    const QRect margin = peer.Margin();
    text << "; margin " << margin.left() << ' ' << margin.top() << ' ' << margin.right() << ' ' << margin.bottom()
         << "; charset " << peer.Charset();
    return text.str();
}

/** A line of version 3 with these fields after the italic one. */
std::string Style3(const std::string &fields)
{
    return "Style: N,F,20,1,2,3,4,0,0," + fields + "\n";
}

/** The same for version 4. */
std::string Style4(const std::string &fields)
{
    return "[V4 Styles]\n" + Style3(fields);
}

/** A line of version 5 with these colours, and these fields after the strike-out. */
std::string Style5(const std::string &colors, const std::string &fields)
{
    return "[V4+ Styles]\nStyle: N,F,20," + colors + ",0,0,0,0," + fields + "\n";
}

} // namespace

using AssStyleTest = AssParserTest;

TEST_F(AssStyleTest, NewestLayout)
{
    Open(
        "[V4+ Styles]\nStyle: *Name, My Font ,20.5,&H01000004,&H02000005,&H7F000006,&H00ABCDEF,-1,1,0,-1,90.5,110,2.25,"
        "-45.5,3,1.5,2.5,8,11,12,13,204\n");
    EXPECT_EQ(Style(m_peer), "My Font  20.5; colors 4 5 6 abcdef; alpha 1 2 127 0; bold -1, italic 1; "
                             "border 1, outline 1.5, shadow 2.5; alignment 8; margin 11 13 12 13; charset 204");
    EXPECT_EQ(NewerMembers(m_peer), (std::vector<double>{0, 1, 90.5, 110, 2.25, -45.5}));
    EXPECT_TRUE(m_peer.Reserved().isNull());
}

TEST_F(AssStyleTest, MiddleLayout)
{
    Open("[V4 Styles]\nStyle: Name,My Font,20.5,&H01000004,5,6,&HABCDEF,700,-1,3,1.5,2.5,6,11,12,13,100,204\n");
    EXPECT_EQ(Style(m_peer), "My Font 20.5; colors 1000004 5 abcdef abcdef; alpha 100 100 100 128; bold 700, italic 1; "
                             "border 1, outline 1.5, shadow 2.5; alignment 8; margin 11 13 12 13; charset 204");
}

TEST_F(AssStyleTest, OldestLayout)
{
    Open("Style: Name,My Font,20.5,4,5,6,7,0,0,1.5,2.5,11,21,22,23,100,204\n");
    EXPECT_EQ(Style(m_peer), "My Font 20.5; colors 4 5 7 7; alpha 100 100 100 128; bold 0, italic 0; "
                             "border 0, outline 1.5, shadow 2.5; alignment 6; margin 21 23 22 23; charset 204");
}

TEST_F(AssStyleTest, OldLayoutsLeaveWhatOnlyTheNewestHas)
{
    Open(Style5("1,2,3,4", "90,80,7,-30,3,1,1,2,0,0,0,0"));
    m_peer.Underline() = 1;
    m_peer.StrikeOut() = 1;
    const std::vector<double> before = {1, 1, 90, 80, 7, -30};
    ASSERT_EQ(NewerMembers(m_peer), before);
    Open(Style4("1,0,0,2,0,0,0,0,0"));
    EXPECT_EQ(NewerMembers(m_peer), before);
    Open(Style3("0,0,2,0,0,0,0,0"));
    EXPECT_EQ(NewerMembers(m_peer), before);
    m_peer.ScaleX() = -5;
    m_peer.Spacing() = -6;
    Open(Style4("1,0,0,2,0,0,0,0,0"));
    EXPECT_EQ(m_peer.ScaleX(), -5);
    EXPECT_EQ(m_peer.Spacing(), -6);
}

TEST_F(AssStyleTest, LastStyleCounts)
{
    Open("[V4+ Styles]\nStyle: A,First,1,1,1,1,1,1,1,1,1,1,1,1,1,3,1,1,1,1,1,1,1\n"
         "Style: B,Second,2,2,2,2,2,2,0,0,0,2,2,2,2,2,2,2,2,2,2,2,2\n");
    EXPECT_EQ(Style(m_peer), "Second 2; colors 2 2 2 2; alpha 0 0 0 0; bold 2, italic 0; "
                             "border 0, outline 2, shadow 2; alignment 2; margin 2 2 2 2; charset 2");
    EXPECT_EQ(NewerMembers(m_peer), (std::vector<double>{0, 0, 2, 2, 2, 2}));
}

TEST_F(AssStyleTest, FailedNumbersAreMinusOne)
{
    Open("[V4+ Styles]\nStyle: x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x\n");
    EXPECT_EQ(Style(m_peer), "x -1; colors ffffff ffffff ffffff ffffff; alpha 255 255 255 255; bold -1, italic 1; "
                             "border 0, outline 0, shadow 0; alignment -1; margin -1 -1 -1 -1; charset -1");
    EXPECT_EQ(NewerMembers(m_peer), (std::vector<double>{1, 1, 0, 0, 0, -1}));

    Open("[V4 Styles]\nStyle: x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x,x\n");
    EXPECT_EQ(m_peer.Colors(), (std::array<int, 4>{-1, -1, -1, -1}));
    EXPECT_EQ(Alpha(m_peer), (std::array<int, 4>{0, 0, 0, 128}));
    EXPECT_EQ(m_peer.Alignment(), 9);
}

TEST_F(AssStyleTest, LineThatStopsAfterTheFontSizeRepeatsIt)
{
    Open("[V4+ Styles]\nStyle: Name,Font,20\n");
    EXPECT_EQ(Style(m_peer), "Font 20; colors 14 14 14 14; alpha 0 0 0 0; bold 20, italic 1; "
                             "border 0, outline 20, shadow 20; alignment 20; margin 20 20 20 20; charset 20");
    EXPECT_EQ(NewerMembers(m_peer), (std::vector<double>{1, 1, 20, 20, 20, 20}));

    Open("Style: Name,Font,20\n");
    EXPECT_EQ(m_peer.Alignment(), 6);
    EXPECT_EQ(Alpha(m_peer), (std::array<int, 4>{20, 20, 20, 128}));
}

TEST_F(AssStyleTest, NewestLayoutSplitsColors)
{
    Open(Style5("&H80FFFFFF,&H00FF8040,-2,-2147483648", "100,100,0,0,1,1,1,2,0,0,0,0"));
    EXPECT_EQ(m_peer.Colors(), (std::array<int, 4>{0xFFFFFF, 0xFF8040, 0xFFFFFE, 0}));
    EXPECT_EQ(Alpha(m_peer), (std::array<int, 4>{255, 0, 255, 128}));
}

TEST_F(AssStyleTest, OldLayoutsClampTheAlphaLevel)
{
    const std::pair<const char *, int> levels[] = {
        {"300", 255}, {"256", 255}, {"255", 255}, {"254", 254},        {"1", 1},          {"0", 0},
        {"-1", 0},    {"-5", 0},    {"x", 0},     {"2147483647", 255}, {"-2147483648", 0}};
    for (const auto &[level, alpha] : levels) {
        Open(Style4("1,0,0,2,0,0,0,"s + level + ",0"));
        EXPECT_EQ(Alpha(m_peer), (std::array<int, 4>{alpha, alpha, alpha, 128})) << level;
        Open(Style3("0,0,2,0,0,0,"s + level + ",0"));
        EXPECT_EQ(Alpha(m_peer), (std::array<int, 4>{alpha, alpha, alpha, 128})) << level;
    }
}

TEST_F(AssStyleTest, BorderStyleIsReduced)
{
    for (const auto &[value, border] :
         {std::pair{"0", 0}, {"1", 0}, {"2", 0}, {"3", 1}, {"4", 0}, {"-3", 0}, {"x", 0}}) {
        Open(Style4(value + ",0,0,2,0,0,0,0,0"s));
        EXPECT_EQ(m_peer.BorderStyle(), border) << value;
        Open(Style5("1,2,3,4", "100,100,0,0,"s + value + ",1,1,2,0,0,0,0"));
        EXPECT_EQ(m_peer.BorderStyle(), border) << value;
    }
}

TEST_F(AssStyleTest, OldestLayoutReducesTheBorderStyleThatItFinds)
{
    Open(Style4("3,0,0,2,0,0,0,0,0"));
    ASSERT_EQ(m_peer.BorderStyle(), 1);
    Open(Style3("0,0,2,0,0,0,0,0"));
    EXPECT_EQ(m_peer.BorderStyle(), 0);
    m_peer.BorderStyle() = 3;
    Open(Style3("0,0,2,0,0,0,0,0"));
    EXPECT_EQ(m_peer.BorderStyle(), 1);
}

TEST_F(AssStyleTest, NegativeSizesAndNanBecomeZero)
{
    for (const char *bad : {"-50", "-0.001", "x", "", "nan", "-inf"}) {
        const std::string f = bad;
        Open(Style5("1,2,3,4", f + "," + f + "," + f + ",0,1," + f + "," + f + ",2,0,0,0,0"));
        EXPECT_EQ(NewerMembers(m_peer), (std::vector<double>{0, 0, 0, 0, 0, 0})) << bad;
        EXPECT_EQ(m_peer.Outline(), 0.0) << bad;
        EXPECT_EQ(m_peer.Shadow(), 0.0) << bad;
        m_peer.Outline() = m_peer.Shadow() = 5;
        Open(Style4("1," + f + "," + f + ",2,0,0,0,0,0"));
        EXPECT_EQ(m_peer.Outline(), 0.0) << bad;
        EXPECT_EQ(m_peer.Shadow(), 0.0) << bad;
        m_peer.Outline() = m_peer.Shadow() = 5;
        Open(Style3(f + "," + f + ",2,0,0,0,0,0"));
        EXPECT_EQ(m_peer.Outline(), 0.0) << bad;
        EXPECT_EQ(m_peer.Shadow(), 0.0) << bad;
    }
    Open(Style5("1,2,3,4", "-50,100,0,0,1,-2,1,2,0,0,0,0"));
    EXPECT_EQ(m_peer.ScaleX(), 0.0);
    EXPECT_EQ(m_peer.ScaleY(), 100.0);
    EXPECT_EQ(m_peer.Outline(), 0.0);
    EXPECT_EQ(m_peer.Shadow(), 1.0);
}

TEST_F(AssStyleTest, FontSizeAndAngleAreNotClamped)
{
    Open("[V4+ Styles]\nStyle: N,F,-20,1,2,3,4,0,0,0,0,100,100,0,-400,1,1,1,2,0,0,0,0\n");
    EXPECT_EQ(m_peer.FontSize(), -20);
    EXPECT_EQ(m_peer.AngleZ(), -400);
    Open("[V4+ Styles]\nStyle: N,F,nan,1,2,3,4,0,0,0,0,100,100,0,inf,1,1,1,2,0,0,0,0\n");
    EXPECT_TRUE(std::isnan(m_peer.FontSize()));
    EXPECT_TRUE(std::isinf(m_peer.AngleZ()));
}

TEST_F(AssStyleTest, EveryStyleZeroesTheOtherAngles)
{
    for (const std::string &style :
         {Style3("0,0,2,0,0,0,0,0"), Style4("1,0,0,2,0,0,0,0,0"), Style5("1,2,3,4", "100,100,0,7,1,1,1,2,0,0,0,0")}) {
        m_peer.AngleX() = 1;
        m_peer.AngleY() = 2;
        Open("PlayResX: 1\n");
        EXPECT_EQ(m_peer.AngleX(), 1);
        Open(style);
        EXPECT_EQ(m_peer.AngleX(), 0.0);
        EXPECT_EQ(m_peer.AngleY(), 0.0);
    }
}

TEST_F(AssStyleTest, OldLayoutsConvertTheAlignment)
{
    const std::pair<int, int> alignments[] = {{0, 0},  {1, 1},  {2, 2},  {3, 3},  {4, 6},  {5, 7},
                                              {6, 8},  {7, 9},  {8, 3},  {9, 4},  {10, 5}, {11, 6},
                                              {12, 6}, {15, 9}, {16, 0}, {18, 2}, {-1, 9}, {INT_MIN, 0}};
    for (const auto &[written, keypad] : alignments) {
        Open(Style4("1,0,0," + std::to_string(written) + ",0,0,0,0,0"));
        EXPECT_EQ(m_peer.Alignment(), keypad) << written;
        Open(Style3("0,0," + std::to_string(written) + ",0,0,0,0,0"));
        EXPECT_EQ(m_peer.Alignment(), keypad) << written;
        Open(Style5("1,2,3,4", "100,100,0,0,1,1,1," + std::to_string(written) + ",0,0,0,0"));
        EXPECT_EQ(m_peer.Alignment(), written);
    }
}
