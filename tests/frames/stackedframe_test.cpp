// Several subtitles in one frame, each with a handle and a burner of its own, that keep clear of each other.
#include "api/libsubtitle.h"
#include "support/planeframe.h"
#include "support/temporaryfolder.h"

#include <climits>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace
{

constexpr int Width = 320;
constexpr int Height = 180;

/** A file whose texts are all due. */
class Subtitle
{
public:
    explicit Subtitle(const std::vector<std::string> &texts, int position = 85, int pointSize = 12,
                      int look = SUBTITLE_LOOK_NATURAL)
    {
        std::string cues;
        for (const std::string &text : texts)
            cues += "00:00:01,000 --> 00:00:02,000\n" + text + "\n\n";
        EXPECT_EQ(SetSubtitleFontParam(m_pHandle, "DejaVu Sans", pointSize, 0), 0);
        EXPECT_EQ(SetSubtitleFile(m_pHandle, m_folder.Write("cues.srt", cues).c_str(), 0), 0);
        SetSubtitlePos(m_pHandle, position);
        EXPECT_EQ(SetSubtitleTimeStamp(m_pHandle, 1500), 0);
        EXPECT_EQ(SetSubtitleBurnerLook(m_pBurner, look), 0);
    }
    ~Subtitle()
    {
        DestroySubtitleBurner(m_pBurner);
        DestroyVideoSubtitle(m_pHandle);
    }
    Subtitle(const Subtitle &) = delete;
    Subtitle &operator=(const Subtitle &) = delete;

    void *Handle() { return m_pHandle; }
    void *Burner() { return m_pBurner; }

    SubtitleRows Rows()
    {
        SubtitleRows rows = {-1, -1};
        EXPECT_EQ(FindSubtitleRows(m_pBurner, &rows), IsSubtitleDue(m_pBurner));
        return rows;
    }
    void Avoid(const std::vector<SubtitleRows> &rows)
    {
        EXPECT_EQ(SetSubtitleBurnerTakenRows(m_pBurner, rows.data(), static_cast<int>(rows.size())), 0);
    }
    void Burn(PlaneFrame &frame, int orientation = SUBTITLE_ORIENTATION_UPRIGHT)
    {
        SubtitleFrame record = frame.Frame();
        record.orientation = orientation;
        EXPECT_EQ(BurnSubtitle(m_pBurner, &record), 0);
    }

private:
    TemporaryFolder m_folder;
    void *m_pHandle = CreateVideoSubtitle(Width, Height);
    void *m_pBurner = CreateSubtitleBurner(m_pHandle);
};

PlaneFrame Grey(int width = Width, int height = Height)
{
    PlaneFrame frame(AV_PIX_FMT_GRAY8, width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x)
            frame.Set(0, x, y, 128);
    }
    return frame;
}

/** The rows, or columns, from the first to the last that are another in two frames. */
SubtitleRows Changed(const PlaneFrame &before, const PlaneFrame &after, bool isTransposed = false)
{
    int first = INT_MAX;
    int last = -1;
    for (int y = 0; y < before.Height(0); ++y) {
        for (int x = 0; x < before.Width(0); ++x) {
            if (before.Get(0, x, y) == after.Get(0, x, y))
                continue;
            first = std::min(first, isTransposed ? x : y);
            last = std::max(last, isTransposed ? x : y);
        }
    }
    return last < 0 ? SubtitleRows{0, 0} : SubtitleRows{first, last - first + 1};
}

SubtitleRows Drawn(Subtitle &subtitle)
{
    PlaneFrame frame = Grey();
    subtitle.Burn(frame);
    return Changed(Grey(), frame);
}

int End(const SubtitleRows &rows)
{
    return rows.top + rows.count;
}

/** Has each keep clear of those before it. */
std::vector<SubtitleRows> Stack(const std::vector<Subtitle *> &subtitles)
{
    std::vector<SubtitleRows> taken;
    for (Subtitle *subtitle : subtitles) {
        subtitle->Avoid(taken);
        taken.push_back(subtitle->Rows());
    }
    return taken;
}

} // namespace

TEST(StackedFrame, RowsAreThoseThatAreDrawnTo)
{
    for (const int look : {SUBTITLE_LOOK_EXACT, SUBTITLE_LOOK_NATURAL}) {
        for (const int position : {0, 50, 85, 100}) {
            Subtitle subtitle({"\xC3\x84gypten"}, position, 12, look);
            const SubtitleRows rows = subtitle.Rows();
            const SubtitleRows drawn = Drawn(subtitle);
            EXPECT_GT(drawn.count, 8);
            EXPECT_LE(rows.top, drawn.top) << look << " at " << position;
            EXPECT_GE(End(rows), End(drawn)) << look << " at " << position;
            EXPECT_LE(rows.count, drawn.count + (look == SUBTITLE_LOOK_EXACT ? 0 : 10));
            SetSubtitleTimeStamp(subtitle.Handle(), 2500);
            EXPECT_EQ(subtitle.Rows().count, 0);
        }
    }
}

TEST(StackedFrame, RowsAreThoseOfThePictureAsItIsShown)
{
    Subtitle subtitle({"Text"}, 20);
    const SubtitleRows drawn = Drawn(subtitle);
    PlaneFrame frame = Grey(Height, Width);
    const PlaneFrame before = frame;
    subtitle.Burn(frame, SUBTITLE_ORIENTATION_TRANSPOSED);
    const SubtitleRows columns = Changed(before, frame, true);
    EXPECT_EQ(columns.top, drawn.top);
    EXPECT_EQ(columns.count, drawn.count);
    EXPECT_LE(subtitle.Rows().top, drawn.top);
    EXPECT_GE(End(subtitle.Rows()), End(drawn));
}

TEST(StackedFrame, FilesOneAboveTheOtherAreAsOneFile)
{
    Subtitle first({"lower"});
    Subtitle second({"middle\nof two lines"});
    Subtitle third({"upper"});
    Subtitle all({"lower", "middle\nof two lines", "upper"});
    Stack({&first, &second, &third});
    PlaneFrame frame = Grey();
    for (Subtitle *subtitle : {&first, &second, &third})
        subtitle->Burn(frame);
    PlaneFrame expected = Grey();
    all.Burn(expected);
    EXPECT_FALSE(expected.Bytes() == Grey().Bytes());
    EXPECT_TRUE(frame.Bytes() == expected.Bytes());
    // And each where it is by itself once the others are over.
    SetSubtitleTimeStamp(first.Handle(), 2500);
    SetSubtitleTimeStamp(second.Handle(), 2500);
    Stack({&first, &second, &third});
    Subtitle alone({"upper"});
    EXPECT_EQ(Drawn(third).top, Drawn(alone).top);
}

TEST(StackedFrame, WhatIsClearStaysWhereItIs)
{
    Subtitle lower({"lower"});
    Subtitle upper({"upper"}, 20);
    const SubtitleRows before = Drawn(upper);
    Stack({&lower, &upper});
    EXPECT_EQ(Drawn(upper).top, before.top);
    EXPECT_EQ(Drawn(upper).count, before.count);
}

TEST(StackedFrame, AtTheTopTheSecondIsBelowTheFirst)
{
    Subtitle first({"first"}, 0);
    Subtitle second({"second"}, 0);
    Stack({&first, &second});
    EXPECT_GE(Drawn(second).top, End(Drawn(first)));
    EXPECT_LE(Drawn(second).top, End(Drawn(first)) + 10);
}

TEST(StackedFrame, TextWithoutRoomGetsASmallerFont)
{
    Subtitle first({"a\nb\nc\nd"}, 85, 20);
    Subtitle second({"A\nB\nC\nD"}, 85, 20);
    const int height = Drawn(second).count;
    Stack({&first, &second});
    EXPECT_LE(End(Drawn(second)), Drawn(first).top);
    EXPECT_GE(Drawn(second).top, 4) << "not beyond the safe area";
    EXPECT_LT(Drawn(second).count, height);
    // Where next to nothing is free it stays legible.
    second.Avoid({{0, 170}});
    EXPECT_EQ(Drawn(second).count, height);
}

TEST(StackedFrame, TheExactLookStaysWhereItIs)
{
    Subtitle first({"first"});
    Subtitle second({"second"}, 85, 12, SUBTITLE_LOOK_EXACT);
    const SubtitleRows before = Drawn(second);
    Stack({&first, &second});
    EXPECT_EQ(Drawn(second).top, before.top);
    // The natural look keeps clear of it, though.
    Stack({&second, &first});
    EXPECT_LE(End(Drawn(first)), before.top);
}

TEST(StackedFrame, ColourGlyphsMoveWithTheirText)
{
    Subtitle subtitle({"fox \xF0\x9F\xA6\x8A"});
    PlaneFrame before = Grey();
    subtitle.Burn(before);
    const SubtitleRows rows = subtitle.Rows();
    subtitle.Avoid({{End(rows) - 1, 1}});
    PlaneFrame after = Grey();
    subtitle.Burn(after);
    EXPECT_EQ(subtitle.Rows().top, rows.top - 1);
    for (int y = 1; y < Height; ++y) {
        for (int x = 0; x < Width; ++x)
            ASSERT_EQ(after.Get(0, x, y - 1), before.Get(0, x, y)) << x << " " << y;
    }
}

TEST(StackedFrame, TakenRowsAreChecked)
{
    Subtitle subtitle({"text"});
    const SubtitleRows alone = subtitle.Rows();
    subtitle.Avoid({{End(alone) - 1, 1}});
    const int moved = subtitle.Rows().top;
    EXPECT_EQ(moved, alone.top - 1);
    for (const SubtitleRows &wrong : {SubtitleRows{-1, 5}, {5, -1}, {INT_MIN, INT_MAX}}) {
        const SubtitleRows list[] = {{100, 50}, wrong};
        EXPECT_EQ(SetSubtitleBurnerTakenRows(subtitle.Burner(), list, 2), -1);
    }
    const SubtitleRows rows = {100, 50};
    EXPECT_EQ(SetSubtitleBurnerTakenRows(subtitle.Burner(), &rows, -1), -1);
    EXPECT_EQ(SetSubtitleBurnerTakenRows(subtitle.Burner(), nullptr, 1), -1);
    EXPECT_EQ(subtitle.Rows().top, moved) << "nothing changed";
    for (const std::vector<SubtitleRows> &none :
         {std::vector<SubtitleRows>{}, {{alone.top, 0}}, {{Height, INT_MAX}}, {{INT_MAX, INT_MAX}}}) {
        subtitle.Avoid({{End(alone) - 1, 1}});
        subtitle.Avoid(none);
        EXPECT_EQ(subtitle.Rows().top, alone.top);
    }
    subtitle.Avoid({{alone.top, INT_MAX}});
    EXPECT_LE(End(Drawn(subtitle)), alone.top);
}
