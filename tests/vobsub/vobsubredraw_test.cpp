// What the next frames show after a host calls setters or TextToBmp() while a bitmap subtitle is due.
#include "support/vobsubapitest.h"

extern "C" {
#include <libavutil/mem.h>
}

#include <array>

namespace
{

class VobSubRedrawTest : public VobSubApiTest
{
protected:
    using Box = std::array<int, 4>;

    static constexpr const char *Text = "Hi";

    /** Called in turn, each changes one more setting. */
    static constexpr int (*Setters[])(void *) = {
        [](void *pHandle) { return SetSubtitleFontColor(pHandle, 200, 100, 50); },
        [](void *pHandle) { return SetSubtitleOutlineColor(pHandle, 50, 100, 200); },
        [](void *pHandle) { return SetSubtitleFontParam(pHandle, "DejaVu Sans", 20, SUBTITLE_STYLE_BOLD); },
    };

    void SetUp() override
    {
        SetFont(m_pHandle);
        ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    }

    static void SetFont(void *pHandle) { ASSERT_EQ(SetSubtitleFontParam(pHandle, "DejaVu Sans", 9, 0), 0); }

    /** Calls TextToBmp(), and returns the box of the text. */
    Box MakeText() const
    {
        AVPicture bitmap = {};
        Box box = {};
        EXPECT_EQ(TextToBmp(m_pHandle, Text, &bitmap, box.data()), 0);
        av_freep(&bitmap.data[0]);
        av_freep(&bitmap.data[1]);
        return box;
    }

    /** The frame of another renderer that shows the text from a file. */
    Bytes TextFrame(int nPosition) const
    {
        void *const pHandle = CreateVideoSubtitle(Width, Height);
        SetFont(pHandle);
        const std::string strFile = m_folder.Write("a.srt", "00:00:01,000 --> 00:00:02,000\nHi\n");
        EXPECT_EQ(OpenFile(pHandle, strFile), 0);
        SetSubtitlePos(pHandle, nPosition);
        Bytes frame = FrameAt(pHandle, 1500);
        DestroyVideoSubtitle(pHandle);
        return frame;
    }

    /** How many rows pictures are moved by while a text of that height is their anchor. */
    static int RowsMoved(const Box &box, int nPosition) { return nPosition * Height / 100 - (box[3] - 1) / 2; }

    Bytes Moved(const std::vector<PictureUnit> &listUnits, int nRows) const
    {
        return Blended(Drawn(m_pair, listUnits), 255, nRows);
    }

    /** Overwrites the open file's pictures with another pair's. */
    void ReplacePictures(const VobSubPair &pair) const { m_folder.Write("pair.sub", pair.Stream()); }

    const Bytes m_bytesB = m_b.Encode();
    /** The second unit comes in two parts. */
    const VobSubPair m_split{Width,
                             Height,
                             {{1000, m_a.Encode(), {}},
                              {2000, Bytes(m_bytesB.begin(), m_bytesB.begin() + 20), {}},
                              {3000, Bytes(m_bytesB.begin() + 20, m_bytesB.end()), {}},
                              {4000, m_c.Encode(), {}}}};
};

} // namespace

TEST_F(VobSubRedrawTest, TextReplacesThePictureUntilTheNextEntry)
{
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    const Box box = MakeText();
    EXPECT_EQ(box[1], RowsMoved(box, 85));
    const Bytes text = TextFrame(85);
    EXPECT_FALSE(text == Untouched());
    EXPECT_TRUE(FrameAt(1600) == text);
    EXPECT_TRUE(FrameAt(2000) == text);
    EXPECT_EQ(SetSubtitlePos(m_pHandle, 30), 0);
    EXPECT_TRUE(FrameAt(1700) == TextFrame(30));
    EXPECT_TRUE(FrameAt(2500) == Moved({m_a, m_b}, RowsMoved(box, 30)));
    EXPECT_TRUE(FrameAt(500) == Untouched());
}

TEST_F(VobSubRedrawTest, TextMovesThePicturesUntilAFileIsSet)
{
    const Box box = MakeText();
    EXPECT_GT(box[3], 10);
    for (const int nPosition : {0, 20, 40, 70}) {
        EXPECT_EQ(SetSubtitlePos(m_pHandle, nPosition), 0);
        EXPECT_TRUE(FrameAt(1500) == Moved({m_b, m_a}, RowsMoved(box, nPosition))) << nPosition;
        EXPECT_TRUE(FrameAt(2500) == Moved({m_a, m_b}, RowsMoved(box, nPosition))) << nPosition;
    }
    EXPECT_EQ(SetSubtitlePos(m_pHandle, 85), 0);
    EXPECT_TRUE(FrameAt(1500) == Moved({m_b, m_a}, RowsMoved(box, 85)));
    EXPECT_FALSE(RowsMoved(box, 85) == 0);

    EXPECT_EQ(SetSubtitleFile(m_pHandle, nullptr, 0), -1); // refused, but it resets the anchor
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_b, m_a}));
    MakeText();
    EXPECT_TRUE(FrameAt(2500) == Moved({m_a, m_b}, RowsMoved(box, 85)));
    ASSERT_EQ(OpenFile(m_pHandle, m_pair.Write(m_folder)), 0);
    EXPECT_TRUE(FrameAt(2500) == Shown(m_pair, {m_b}));
}

TEST_F(VobSubRedrawTest, TextBeforeAnEntrysFirstFrameIsNotShown)
{
    const Box box = MakeText();
    EXPECT_TRUE(FrameAt(500) == Untouched());
    EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, 1500), 0);
    MakeText();
    EXPECT_TRUE(FrameAt(1500) == Moved({m_a}, RowsMoved(box, 85)));
}

TEST_F(VobSubRedrawTest, SetterBringsThePictureBackInPlaceOfTheText)
{
    EXPECT_EQ(SetSubtitlePos(m_pHandle, 40), 0);
    for (const auto set : Setters) {
        EXPECT_TRUE(FrameAt(500) == Untouched());
        FrameAt(1500);
        const Box box = MakeText();
        EXPECT_FALSE(FrameAt(1600) == Moved({m_a}, RowsMoved(box, 40)));
        EXPECT_EQ(set(m_pHandle), 0);
        EXPECT_TRUE(FrameAt(1600) == Moved({m_a}, RowsMoved(box, 40)));
    }
}

TEST_F(VobSubRedrawTest, SetterMakesTheEntryBeFetchedAndDecodedAgain)
{
    const VobSubPair other(Width, Height, {{1000, m_c.Encode(), {}}, {2000, m_b.Encode(), {}}});
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    for (const auto set : Setters) {
        ReplacePictures(other);
        EXPECT_TRUE(FrameAt(1600) == Shown(m_pair, {m_c, m_a}));
        EXPECT_EQ(set(m_pHandle), 0);
        EXPECT_TRUE(FrameAt(1600) == Shown(m_pair, {m_a, m_c}));
        ReplacePictures(m_pair);
        EXPECT_TRUE(FrameAt(1700) == Shown(m_pair, {m_a, m_c}));
        EXPECT_EQ(SetSubtitleOutlineColor(m_pHandle, 1, 2, 3), 0);
        EXPECT_TRUE(FrameAt(1700) == Shown(m_pair, {m_c, m_a}));
    }
    std::filesystem::remove(m_folder.Path() / "pair.sub");
    EXPECT_TRUE(FrameAt(1800) == Shown(m_pair, {m_c, m_a}));
    EXPECT_EQ(SetSubtitleOutlineColor(m_pHandle, 1, 2, 3), 0);
    EXPECT_TRUE(FrameAt(1800) == Untouched());
}

TEST_F(VobSubRedrawTest, PlaceOpacityAndAColourThatIsSetAlreadyFetchNothing)
{
    EXPECT_EQ(SetSubtitleFontColor(m_pHandle, 9, 8, 7), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_pair, {m_a}));
    std::filesystem::remove(m_folder.Path() / "pair.sub");
    EXPECT_EQ(SetSubtitleFontColor(m_pHandle, 9, 8, 7), -1);
    EXPECT_EQ(SetSubtitlePos(m_pHandle, 95), 0);
    EXPECT_EQ(SetSubtitleAlpah(m_pHandle, 77), 0);
    EXPECT_TRUE(FrameAt(1600) == Blended(Drawn(m_pair, {m_a}), 77, 6)); // 60 - 54
}

TEST_F(VobSubRedrawTest, SetterLeavesTheFrameAsItWas)
{
    std::vector<PictureUnit> listShown;
    long ms = 1500;
    for (const PictureUnit &unit : {m_a, m_b, m_c}) {
        listShown.push_back(unit);
        EXPECT_TRUE(FrameAt(ms) == Shown(m_pair, listShown)) << ms;
        for (const auto set : Setters) {
            set(m_pHandle);
            EXPECT_TRUE(FrameAt(ms) == Shown(m_pair, listShown)) << ms;
        }
        ms += 1000;
    }
}

TEST_F(VobSubRedrawTest, SetterLeavesTheFrameOfAnEntryWithoutAWholeUnitAsItWas)
{
    ASSERT_EQ(OpenFile(m_pHandle, m_split.Write(m_folder)), 0);
    EXPECT_TRUE(FrameAt(1500) == Shown(m_split, {m_a}));
    EXPECT_TRUE(FrameAt(2500) == Shown(m_split, {m_a}));
    for (const auto set : Setters) {
        EXPECT_EQ(set(m_pHandle), 0);
        EXPECT_TRUE(FrameAt(2500) == Shown(m_split, {m_a}));
    }
    // The decoder holds the first part only once, however often it was fetched.
    EXPECT_TRUE(FrameAt(3500) == Shown(m_split, {m_a, m_b}));
    EXPECT_EQ(SetSubtitleOutlineColor(m_pHandle, 1, 2, 3), 0);
    EXPECT_TRUE(FrameAt(3500) == Shown(m_split, {m_a, m_b}));
}
