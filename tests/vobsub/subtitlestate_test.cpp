// How the decoder is set up and given back, what a host sees of it, and its parts on their own.
#include "support/pictureunit.h"
#include "support/subtitledecodertest.h"

#include <algorithm>
#include <climits>

namespace
{

/** Calls every function of the decoder. */
void UseEverything()
{
    const auto unit = PictureUnit::Filled(0, 0, 4, 4).Encode();
    EXPECT_EQ(subtitle_decode(unit.data(), static_cast<int>(unit.size())), 1);
    Init_RleOutput(0, 0, 4, 4, 0xFFFF, 0x3210);
    Rle_Output(5);
    New_Line();
    Rle_Output(63);
    EXPECT_EQ(Get_HalfByte(), 0);
    EXPECT_EQ(Get_HalfByte(), 0);
    EXPECT_EQ(Get_Byte(), 0);
    EXPECT_EQ(Get_Short(), 0);
    SubtitlePlanes planes = {};
    subtitle_write(&planes);
    subtitle_write_x(&planes);
    subtitle_release();
}

} // namespace

TEST_F(SubtitleDecoderTest, NothingHappensWithoutADecoder)
{
    UseEverything();
    EXPECT_FALSE(subtitle_is_set_up());
    Init(8, 8);
    Feed(PictureUnit::Filled(0, 0, 4, 4).Encode());
    subtitle_release();
    EXPECT_EQ(decoder.Rdptr, nullptr);
    UseEverything();
    EXPECT_FALSE(subtitle_is_set_up());
    subtitle_release();
}

TEST_F(SubtitleDecoderTest, SettingUpMakesAnEmptyCanvas)
{
    for (const int nTime : {1, 2}) {
        Init(7, 5);
        EXPECT_EQ(Coded_Picture_Width, 7);
        EXPECT_EQ(Coded_Picture_Height, 5);
        EXPECT_EQ(Chroma_Width, 7);
        EXPECT_EQ(Chroma_Height, 5);
        EXPECT_EQ(chroma_format, 3);
        EXPECT_EQ(Subt_Color, 1);
        EXPECT_EQ(Subt_Offset, 0);
        EXPECT_EQ(mediadata.plane[1], mediadata.plane[0] + 35);
        EXPECT_EQ(mediadata.plane[2], mediadata.plane[0] + 70);
        for (int n = 0; n < 35; ++n) {
            EXPECT_EQ(mediadata.plane[0][n], 0);
            EXPECT_EQ(mediadata.plane[1][n], 128);
            EXPECT_EQ(mediadata.plane[2][n], 128);
            EXPECT_EQ(mediadata.plane[3][n], 0);
        }
        ExpectSame();
        Feed(PictureUnit::Filled(0, 0, 7, 5, nTime).Encode());
        Feed(Bytes(1000, 1));
        SetHostVariables(0, 5, 1, 3);
        Chroma_Height = 4;
    }
    Feed(Bytes(3));
    Init(7, 5); // drops the bytes held
    EXPECT_EQ(decoder.Rdlgth, 0);
    Feed(PictureUnit::Filled(0, 0, 7, 5).Encode());
    EXPECT_EQ(Row(4), "1111111");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, AnyNumberOfLinesIsPossible)
{
    Init(8, 6);
    Init_RleOutput(0, 0, 8, 6, 0xFFFF, 0x3210);
    for (int n = 0; n < 3; ++n)
        New_Line();
    Rle_Output(4 * 8 + 1);
    EXPECT_EQ(decoder.subt_y, 6);
    for (const int nLine : {SUBTITLE_MAX_SIDE, (1 << 30) + 10, INT_MAX - 1, INT_MAX}) {
        decoder.subt_y = nLine;
        New_Line();
        EXPECT_GT(decoder.subt_y, SUBTITLE_MAX_SIDE);
        Rle_Output(4 * 8 + 1);
    }
    for (int n = 0; n < 6; ++n)
        EXPECT_EQ(Row(n), "........");
    EXPECT_EQ(mediadata.top, 6);
    EXPECT_EQ(mediadata.bottom, 0);
}

TEST_F(SubtitleDecoderTest, SettingUpLeavesTheLastUnitsRowsAndTimes)
{
    Init(8, 200);
    Feed(PictureUnit::Filled(0, 150, 7, 5).Encode());
    EXPECT_EQ(mediadata.top, 152);
    EXPECT_EQ(mediadata.bottom, 156);
    const double fStop = mediadata.stop;
    Init(4, 4);
    EXPECT_EQ(mediadata.top, 152);
    EXPECT_EQ(mediadata.bottom, 156);
    EXPECT_EQ(mediadata.stop, fStop);
    WriteX(); // of the last unit's rows, none of which this canvas has
    ExpectSame();
    Init(8, 200);
    Feed(PictureUnit::Filled(0, 1, 7, 150).Encode());
    EXPECT_EQ(mediadata.top, 3);
    Init(8, 20);
    WriteX(); // of the last unit's rows, some of which this canvas has
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, RecordIsReadWordByWord)
{
    Init(6, 4);
    RawUnit unit = RawUnit::InArea(0, 0, 6, 4);
    unit.strTop = "D0002 0";
    unit.strControl =
        "00000100 01" + unit.Colours() + unit.Contrasts() + unit.Area() + unit.Offsets() + "FF" + "00010200 02FF";
    Feed(unit);
    const auto *const pRecord = reinterpret_cast<const unsigned char *>(&mediadata);
    std::uint8_t *listWords[18];
    double listTimes[2];
    std::int32_t listRows[2];
    ASSERT_EQ(sizeof mediadata, sizeof listWords + sizeof listTimes + sizeof listRows);
    std::memcpy(listWords, pRecord, sizeof listWords);
    std::memcpy(listTimes, pRecord + sizeof listWords, sizeof listTimes);
    std::memcpy(listRows, pRecord + sizeof listWords + sizeof listTimes, sizeof listRows);
    EXPECT_EQ(Bytes(listWords[0], listWords[0] + 4), (Bytes{17, 17, 17, 0}));
    EXPECT_EQ(Bytes(listWords[1], listWords[1] + 4), (Bytes{0x51, 0x51, 0x51, 128}));
    EXPECT_EQ(Bytes(listWords[2], listWords[2] + 4), (Bytes{0xA1, 0xA1, 0xA1, 128}));
    EXPECT_EQ(Bytes(listWords[3], listWords[3] + 4), (Bytes{240, 240, 240, 0}));
    for (const int n : {4, 5, 6, 7, 8, 12, 13, 14, 15, 16, 17})
        EXPECT_EQ(listWords[n], nullptr);
    EXPECT_EQ(listTimes[0], 2912.0);
    EXPECT_EQ(listTimes[1], 5825.0);
    EXPECT_EQ(listRows[0], 0);
    EXPECT_EQ(listRows[1], 0);
    WriteX();
    const int nBelow = 6 * 4 - 1;
    EXPECT_EQ(listWords[9][nBelow], 255);
    EXPECT_EQ(listWords[10][nBelow], 0);
    EXPECT_EQ(listWords[11][nBelow], 255);
}

TEST_F(SubtitleDecoderTest, WriteFillsNineWords)
{
    Init(6, 20);
    Feed(PictureUnit::Filled(1, 2, 3, 6).Encode());
    void *listWords[10] = {};
    std::fill_n(listWords, 10, &listWords);
    subtitle_write(reinterpret_cast<SubtitlePlanes *>(listWords));
    for (int n = 0; n < 4; ++n)
        EXPECT_EQ(listWords[n], mediadata.plane[n]);
    for (int n = 4; n < 7; ++n)
        EXPECT_EQ(listWords[n], nullptr);
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(listWords[7]), 4);
    EXPECT_EQ(reinterpret_cast<std::intptr_t>(listWords[8]), 9);
    EXPECT_EQ(listWords[9], &listWords);
}

TEST_F(SubtitleDecoderTest, ReleasingLeavesTheAddresses)
{
    Init(6, 4);
    const subtitle_canvas before = mediadata;
    subtitle_release();
    EXPECT_TRUE(std::equal(before.plane, before.plane + 4, mediadata.plane));
    EXPECT_TRUE(std::equal(before.out, before.out + 3, mediadata.out));
    SubtitlePlanes planes = {};
    subtitle_write(&planes);
    EXPECT_EQ(planes.plane[3], before.plane[3]);
    EXPECT_EQ(Coded_Picture_Width, 6);
}

TEST_F(SubtitleDecoderTest, ImpossibleSizesLeaveNoCanvas)
{
    const int listSizes[][2] = {{0, 4},    {4, 0},    {0, 0},         {-1, 4},           {4, -1}, {INT_MIN, INT_MIN},
                                {4097, 1}, {1, 4097}, {65536, 65536}, {INT_MAX, INT_MAX}};
    for (const auto &size : listSizes) {
        Init(8, 8);
        Init(size[0], size[1]);
        EXPECT_EQ(Coded_Picture_Width, 0);
        EXPECT_EQ(Coded_Picture_Height, 0);
        EXPECT_EQ(Chroma_Width, 0);
        EXPECT_EQ(Chroma_Height, 0);
        for (const auto *pPlane : mediadata.plane)
            EXPECT_EQ(pPlane, nullptr);
        EXPECT_TRUE(subtitle_is_set_up());
        const Bytes unit = PictureUnit::Filled(0, 0, 4, 4).Encode();
        EXPECT_EQ(subtitle_decode(unit.data(), static_cast<int>(unit.size())), 1);
        EXPECT_EQ(decoder.Rdlgth, 0);
        Init_RleOutput(0, 0, 1, 1, 0xFFFF, 0x3210);
        Rle_Output(5);
        SubtitlePlanes planes = {};
        subtitle_write_x(&planes);
        for (const auto *pPlane : planes.plane)
            EXPECT_EQ(pPlane, nullptr);
    }
    Init(8, 2);
    Feed(PictureUnit::Filled(0, 0, 8, 2).Encode());
    EXPECT_EQ(Row(1), "11111111");
}

TEST_F(SubtitleDecoderTest, LongestSides)
{
    Init(4096, 1);
    Feed(PictureUnit::Filled(0, 0, 4096, 1, 3).Encode());
    EXPECT_EQ(Row(0), std::string(4096, '3'));
    ExpectSame();
    WriteX();
    ExpectSame();
    Init(1, 4096);
    Feed(PictureUnit::Filled(0, 1, 1, 4095, 2).Encode());
    EXPECT_EQ(Row(0), ".");
    EXPECT_EQ(Row(1), "2");
    EXPECT_EQ(Row(4095), "2");
    EXPECT_EQ(mediadata.bottom, 4095);
    ExpectSame();
    WriteX();
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, ReadersReadOnInAnIncompleteUnit)
{
    Init(4, 4);
    Feed(FromHex("01000010 ABCDEF 12345678"));
    EXPECT_EQ(Get_HalfByte(), 0xA);
    EXPECT_EQ(Get_HalfByte(), 0xB);
    EXPECT_EQ(Get_HalfByte(), 0xC);
    EXPECT_EQ(Get_Byte(), 0xCD); // the whole byte, although half of it was read before
    EXPECT_EQ(Get_HalfByte(), 0xE);
    EXPECT_EQ(Get_Short(), 0xEF12);
    EXPECT_EQ(Get_Byte(), 0x34);
    EXPECT_EQ(Get_Short(), 0x5678);
}

TEST_F(SubtitleDecoderTest, ReadersReadNothingPastTheBuffer)
{
    Init(4, 4);
    Bytes bytes = FromHex("FFFF0010");
    bytes.resize(65534, 0xEE);
    Feed(bytes);
    for (int n = 4; n < 65533; ++n)
        ASSERT_EQ(Get_Byte(), 0xEE);
    EXPECT_EQ(Get_HalfByte(), 0xE);
    EXPECT_EQ(Get_HalfByte(), 0xE);
    EXPECT_EQ(Get_Short(), 0); // bytes that were never written
    for (int n = 0; n < 9; ++n) {
        EXPECT_EQ(Get_HalfByte(), 0);
        EXPECT_EQ(Get_Byte(), 0);
        EXPECT_EQ(Get_Short(), 0);
    }
    EXPECT_EQ(decoder.Rdptr, decoder.Rdbfr + 65536);
}

TEST_F(SubtitleDecoderTest, WritingWithoutAUnit)
{
    Init(10, 6);
    Init_RleOutput(1, 1, 8, 4, 0xF8F0, 0x4321);
    EXPECT_EQ(mediadata.top, 6);
    EXPECT_EQ(mediadata.bottom, 0);
    Rle_Output(0);          // nothing
    Rle_Output(3 << 2 | 1); // from column 0
    // cppcheck-suppress badBitmaskCheck; a length and a colour, as elsewhere
    Rle_Output(2 << 2 | 0); // transparent
    Rle_Output(1 << 2 | 3); // from column 5
    EXPECT_EQ(Row(1), ".222..4...");
    EXPECT_EQ(mediadata.top, 0); // row 0 of the area
    EXPECT_EQ(mediadata.bottom, 0);
    Rle_Output(7 << 2 | 2); // to the line's end, and 5 pixels more
    EXPECT_EQ(Row(1), ".222..433.");
    EXPECT_EQ(mediadata.bottom, 2);
    Rle_Output(2 << 2 | 1);
    EXPECT_EQ(Row(3), "......22..");
    Rle_Output(1 << 2 | 1); // the last pixel of the field
    Rle_Output(1 << 2 | 1); // outside the area
    EXPECT_EQ(Row(3), "......222.");
    EXPECT_EQ(Row(0) + Row(2) + Row(4) + Row(5), std::string(40, '.'));
    EXPECT_EQ(mediadata.bottom, 4);
    EXPECT_TRUE(decoder.second_picture);
}

TEST_F(SubtitleDecoderTest, RunOfLength0OnlyCounts)
{
    Init(10, 6);
    Init_RleOutput(1, 1, 8, 4, 0xFFF0, 0x3210);
    Rle_Output(1);
    EXPECT_TRUE(IsTransparent());
    EXPECT_EQ(mediadata.top, 0);
}

TEST_F(SubtitleDecoderTest, NewLineLeavesTheColumnCountToTheCaller)
{
    Init(10, 6);
    Init_RleOutput(1, 0, 8, 4, 0xFFFF, 0x3210);
    Rle_Output(5 << 2 | 1);
    New_Line();
    Rle_Output(2 << 2 | 2); // drawn at the line's start, but counted from column 5
    Rle_Output(1 << 2 | 3); // so this one ends the line
    Rle_Output(1 << 2 | 1); // below the area
    EXPECT_EQ(Row(0), ".11111....");
    EXPECT_EQ(Row(2), ".223......");
    EXPECT_EQ(Row(4), "..........");
}

TEST_F(SubtitleDecoderTest, NewLineDropsTheHalfReadByte)
{
    Init(4, 4);
    Feed(FromHex("01000010 ABCDEF12"));
    EXPECT_EQ(Get_HalfByte(), 0xA);
    New_Line();
    EXPECT_EQ(Get_HalfByte(), 0xC);
    EXPECT_EQ(Get_HalfByte(), 0xD);
    New_Line();
    EXPECT_EQ(Get_HalfByte(), 0xE);
}

TEST_F(SubtitleDecoderTest, WritingOutsideTheCanvasShowsNothing)
{
    Init(10, 6);
    const int listAreas[][4] = {{-1, 0, 4, 4},      {0, -1, 4, 4},      {0, 0, 11, 1},
                                {0, 0, 1, 7},       {INT_MAX, 0, 1, 1}, {0, INT_MAX, 1, 1},
                                {1, 1, INT_MAX, 1}, {1, 1, 1, INT_MAX}, {INT_MIN, INT_MIN, 1, 1},
                                {0, 0, 0, 1},       {0, 0, 1, 0},       {0, 0, INT_MIN, INT_MIN}};
    for (const auto &area : listAreas) {
        Init_RleOutput(area[0], area[1], area[2], area[3], 0xFFFF, 0x3210);
        for (int n = 0; n < 8; ++n)
            Rle_Output(13);
        EXPECT_TRUE(IsTransparent());
        EXPECT_EQ(mediadata.plane[0][0], 0);
    }
    Init_RleOutput(9, 5, 1, 1, 0xFFFF, 0x3210);
    Rle_Output(13);
    EXPECT_EQ(Row(5), ".........1");
}

TEST_F(SubtitleDecoderTest, LongestRunThatCanBeSaid)
{
    Init(10, 20);
    Init_RleOutput(0, 0, 10, 20, 0xFFFF, 0x3210);
    for (int n = 0; n < 10; ++n)
        Rle_Output(0xFFFFFFFF);
    EXPECT_EQ(Row(0), "3333333333");
    for (int nRow = 1; nRow < 20; ++nRow)
        EXPECT_EQ(Row(nRow), "..........");
}

TEST_F(SubtitleDecoderTest, ReadersContinueAfterAHeaderOfAnyKind)
{
    Init(8, 2);
    for (const Bytes &header : {Bytes{0xFF, 0xFF, 0, 0}, Bytes{0xFF, 0xFF, 0xFF, 0xFF}, Bytes{1, 0, 2, 0}}) {
        Init(8, 2);
        Bytes bytes(header);
        bytes.insert(bytes.end(), {0x12, 0x34, 0x56, 0x78, 0x9A});
        Feed(bytes);
        EXPECT_EQ(Get_HalfByte(), 1);
        EXPECT_EQ(Get_HalfByte(), 2);
        EXPECT_EQ(Get_HalfByte(), 3);
        EXPECT_EQ(Get_Byte(), 0x34);
        EXPECT_EQ(Get_Short(), 0x5678);
    }
}

TEST_F(SubtitleDecoderTest, AreaOfAnEarlierCanvasIsCleared)
{
    Init(300, 300);
    Init_RleOutput(0, 0, 300, 300, 0xFFFF, 0);
    Init(10, 10);
    Rle_Output(801);
    New_Line();
    Rle_Output(801);
    EXPECT_TRUE(IsTransparent());
}
