// The text that subburn extracts from packets of subtitle streams.
#include "tools/subtitles/cuetext.h"

#include <gtest/gtest.h>

namespace
{

// cppcheck-suppress passedByValue; AVPacket::data is not const
std::string TextOf(AVCodecID id, std::string strPayload)
{
    AVPacket packet = {};
    packet.data = reinterpret_cast<std::uint8_t *>(strPayload.data());
    packet.size = static_cast<int>(strPayload.size());
    return CueText(id, packet);
}

std::string Repeated(const std::string &strPart, std::size_t nCount)
{
    std::string strWhole;
    for (std::size_t n = 0; n < nCount; ++n)
        strWhole += strPart;
    return strWhole;
}

/** Enough to exceed the test's time limit if the rest of the text were searched again from each position. */
constexpr std::size_t Many = 2 << 20;

} // namespace

TEST(CueTextTest, TagsGoAndOtherBracketsStay)
{
    EXPECT_EQ(TextOf(AV_CODEC_ID_SUBRIP, "<i>a</i> <b>b<br>c<BR/>d"), "a b\nc\nd");
    EXPECT_EQ(TextOf(AV_CODEC_ID_SUBRIP, "a < b > c <3 <x> <strongly> <strong> <span.k>d"),
              "a < b > c <3 <x> <strongly>  d");
    EXPECT_EQ(TextOf(AV_CODEC_ID_WEBVTT, "<00:01.500>a<1>b<2:3"), "a<1>b<2:3");
    EXPECT_EQ(TextOf(AV_CODEC_ID_SUBRIP, "<<i>a<<b>b<"), "<a<b<");
    EXPECT_EQ(TextOf(AV_CODEC_ID_SUBRIP, "{\\an8}a{b}{\\c"), "a{b}{\\c");
    EXPECT_EQ(TextOf(AV_CODEC_ID_SUBRIP, "{\\<b>}a<b}>{\\b}"), "a<b}>");
}

TEST(CueTextTest, OverridesAndDrawingsGo)
{
    const std::string strFields = "0,0,Default,,0,0,0,,";
    EXPECT_EQ(TextOf(AV_CODEC_ID_ASS, strFields + "{\\b1}a{\\p1}m 0 0{\\p0}b{c\\Nd"), "ab{c\nd");
    EXPECT_EQ(TextOf(AV_CODEC_ID_ASS, strFields + "\\{a\\}{b}{"), "{a}{");
}

TEST(CueTextTest, MarkupThatIsNeverClosedTakesNoTimeOfItsOwn)
{
    for (const std::string strPart : {"<", "<b", "{\\", "<1:"}) {
        const std::string strText = Repeated(strPart, Many);
        EXPECT_TRUE(TextOf(AV_CODEC_ID_SUBRIP, strText) == strText) << strPart;
    }
    const std::string strText = Repeated("{", Many);
    EXPECT_TRUE(TextOf(AV_CODEC_ID_ASS, "0,0,Default,,0,0,0,," + strText) == strText);
}

TEST(CueTextTest, MarkupThatIsClosedFarAwayTakesNoTimeOfItsOwn)
{
    for (const std::string strPart : {"<", "<bb", "<longer than any", "<1"}) {
        const std::string strText = Repeated(strPart, Many) + ">";
        EXPECT_TRUE(TextOf(AV_CODEC_ID_SUBRIP, strText) == strText) << strPart;
    }
}
