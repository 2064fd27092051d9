// The picture on a plain background, as subtitle_write_x() packs it.
#include "support/pictureunit.h"
#include "support/subtitledecodertest.h"

#include <array>
#include <climits>

namespace
{

using Pixel = std::array<int, 3>;

const Pixel Background = {255, 0, 255};

/** The three bytes of a packed pixel. The block begins where the Y plane did. */
Pixel PackedAt(int nX, int nY)
{
    const std::uint8_t *const p = mediadata.plane[0] + 3 * (nY * Coded_Picture_Width + nX);
    return {p[0], p[1], p[2]};
}

/** Blue, green and red of an entry of the palette. */
Pixel Entry(int k)
{
    return {16 * k + 1, 0x50 + k, 0xA0 + k};
}

/** The first and last row with a pixel of entry 1; -1 if there is none. */
std::pair<int, int> Rows()
{
    std::pair<int, int> rows = {-1, -1};
    for (int nY = 0; nY < Coded_Picture_Height; ++nY) {
        for (int nX = 0; nX < Coded_Picture_Width; ++nX) {
            if (PackedAt(nX, nY)[0] != Entry(1)[0])
                continue;
            rows.first = rows.first < 0 ? nY : rows.first;
            rows.second = nY;
        }
    }
    return rows;
}

} // namespace

TEST_F(SubtitleDecoderTest, PackedPixelsAreBlueGreenRed)
{
    Init(9, 60);
    RawUnit unit = RawUnit::InArea(2, 20, 6, 3); // the visible pixels, in rows 20 and 22, do not end their lines
    unit.nContrasts = 0xFFF0;
    unit.strTop = "5E0002 "
                  "F0000 0";
    Feed(unit);
    EXPECT_EQ(mediadata.top, 20);
    EXPECT_EQ(mediadata.bottom, 22);
    WriteX();
    EXPECT_EQ(PackedAt(2, 20), Entry(1));
    EXPECT_EQ(PackedAt(3, 20), Entry(2));
    EXPECT_EQ(PackedAt(5, 20), Entry(2));
    EXPECT_EQ(PackedAt(6, 20), Background);
    EXPECT_EQ(PackedAt(2, 22), Entry(3));
    EXPECT_EQ(PackedAt(5, 22), Background);
    EXPECT_EQ(PackedAt(2, 21), Background);
    EXPECT_EQ(PackedAt(0, 0), Background);
    EXPECT_EQ(PackedAt(8, 59), Background);
    EXPECT_EQ(mediadata.plane[3][20 * 9 + 2], 240); // the alpha plane stays
    ExpectSame();
    WriteX(); // packs the packed bytes again
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, PlacementByTheOffset)
{
    const int listCases[][2] = {
        {0, 20},    {5, 25},       {24, 44}, {25, 45},             // 25 + bottom is 50: not below 60 - 10
        {100, 45},  {INT_MAX, 45}, {-5, 15}, {-10, 10}, {-11, 10}, // never above row 10
        {-100, 10}, {INT_MIN, 10},
    };
    for (const auto &values : listCases) {
        SCOPED_TRACE(values[0]);
        Init(9, 60);
        RawUnit unit = RawUnit::InArea(2, 20, 6, 6);
        unit.strTop = "D0000 0 D0000 0 D0000 0";
        unit.strBottom = "D0000 0 D0000 0 D0000 0";
        Feed(unit);
        ASSERT_EQ(mediadata.bottom, 25);
        SetHostVariables(1, values[0], 3, 9);
        WriteX();
        EXPECT_EQ(Rows(), std::make_pair(values[1], values[1] + 5));
        ExpectSame();
    }
}

TEST_F(SubtitleDecoderTest, ChromaOfEveryOtherPixelIn420)
{
    Init(8, 60);
    RawUnit unit = RawUnit::InArea(0, 20, 8, 4);
    unit.strTop = "DD0000 DD0000";
    unit.strBottom = "EE0000 EE0000";
    Feed(unit);
    SetHostVariables(1, 0, 1, 4);
    WriteX();
    for (int nX = 0; nX < 8; ++nX) {
        EXPECT_EQ(mediadata.out[0][20 * 8 + nX], nX < 6 ? 17 : 255);
        EXPECT_EQ(mediadata.out[0][21 * 8 + nX], nX < 6 ? 33 : 255);
    }
    for (int nX = 0; nX < 4; ++nX) { // half as many rows, of 4 bytes each
        for (const int nRow : {10, 11}) {
            EXPECT_EQ(mediadata.out[1][nRow * 4 + nX], nX < 3 ? 0x51 : 0);
            EXPECT_EQ(mediadata.out[2][nRow * 4 + nX], nX < 3 ? 0xA1 : 255);
        }
        EXPECT_EQ(mediadata.out[1][12 * 4 + nX], 0);
        EXPECT_EQ(mediadata.out[1][9 * 4 + nX], 0);
    }
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, ChromaRowsFollowEachOtherWithoutAGap)
{
    Init(7, 60); // four chroma bytes a row, but Chroma_Width says six
    RawUnit unit = RawUnit::InArea(0, 30, 7, 4);
    unit.strTop = "DD0000 DD0000";
    Feed(unit);
    SetHostVariables(1, 1, 1, 6);
    WriteX();
    const std::uint8_t *const pChroma = mediadata.out[1] + 15 * 6;
    EXPECT_EQ(Bytes(pChroma - 1, pChroma + 9), (Bytes{0, 0x51, 0x51, 0x51, 0, 0x51, 0x51, 0x51, 0, 0}));
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, RowsBelowThePictureAreDropped)
{
    for (int nHeight = 1; nHeight <= 24; ++nHeight) {
        for (const int nFormat : {3, 1}) {
            SCOPED_TRACE(nHeight);
            Init(5, nHeight);
            Feed(PictureUnit::Filled(0, 0, 5, nHeight).Encode());
            SetHostVariables(1, 0, nFormat, 5);
            WriteX();
            if (nFormat == 3) {
                EXPECT_EQ(Rows().first, nHeight > 10 ? 10 : -1);
            }
            ExpectSame();
        }
    }
}

TEST_F(SubtitleDecoderTest, NoVisiblePixelIsAllBackground)
{
    Init(5, 7);
    Feed(PictureUnit::Filled(0, 0, 5, 7, 0).Encode());
    WriteX();
    for (int n = 0; n < 35; ++n)
        EXPECT_EQ(PackedAt(n % 5, n / 5), Background);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, OnePixelCanvas)
{
    Init(1, 1);
    Feed(PictureUnit::Filled(0, 0, 1, 1).Encode());
    EXPECT_EQ(Row(0), "1");
    WriteX();
    EXPECT_EQ(PackedAt(0, 0), Background);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, ChromaWidthsBeyondThePlanesWriteNothingOutside)
{
    for (const int nChromaWidth : {-1, -1000, 0, 1, 9, 1000, 1000000}) {
        for (const int nFormat : {3, 1, 2, 0}) {
            Init(8, 30);
            Feed(PictureUnit::Filled(0, 12, 8, 9).Encode());
            SetHostVariables(1, 0, nFormat, nChromaWidth);
            WriteX();
            ExpectSame();
        }
    }
}

TEST_F(SubtitleDecoderTest, UnitAfterPackingIsDrawnOverThePackedBytes)
{
    Init(8, 30);
    Feed(PictureUnit::Filled(0, 12, 8, 9).Encode());
    WriteX();
    RawUnit unit = RawUnit::InArea(0, 0, 8, 2);
    unit.strTop = "D0000 0";
    Feed(unit);
    EXPECT_EQ(Bytes(mediadata.plane[0], mediadata.plane[0] + 6), (Bytes{17, 17, 17, 255, 0, 255}));
    ExpectSame();
}
