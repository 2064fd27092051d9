// What the decoder makes of a unit's pixels and commands.
#include "support/pictureunit.h"
#include "support/subtitledecodertest.h"

namespace
{

const std::string Line8 = "21"; // a run of 8 of code 1

} // namespace

TEST_F(SubtitleDecoderTest, UnitSplitOverTwoCallsIsDecodedByTheSecond)
{
    Init(8, 2);
    const Bytes unit = Unit8x2().Encode();
    const Bytes first(unit.begin(), unit.begin() + 9);
    Feed(first);
    EXPECT_TRUE(IsTransparent());
    EXPECT_EQ(Held(), first);
    EXPECT_EQ(decoder.Rdptr, decoder.Rdbfr + 4); // the header is read
    ExpectSame();
    Feed(Bytes(unit.begin() + 9, unit.end()));
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(Row(1), "22222222");
    EXPECT_EQ(decoder.Rdlgth, 0);
    EXPECT_EQ(decoder.Rdptr, decoder.Rdbfr);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, UnitSplitAnywhere)
{
    PictureUnit picture = PictureUnit::Filled(3, 1, 20, 9);
    for (std::size_t n = 0; n < picture.listPixels.size(); ++n)
        picture.listPixels[n] = static_cast<std::uint8_t>(n * n / 7 % 4);
    const Bytes unit = picture.Encode();
    for (std::size_t nAt = 1; nAt < unit.size(); ++nAt) {
        SCOPED_TRACE(nAt);
        Init(30, 12);
        Feed(Bytes(unit.begin(), unit.begin() + nAt));
        EXPECT_TRUE(IsTransparent());
        EXPECT_EQ(decoder.Rdptr, nAt < 4 ? decoder.Rdbfr : decoder.Rdbfr + 4); // read only when whole
        ExpectSame();
        Feed(Bytes(unit.begin() + nAt, unit.end()));
        for (int nPixel = 0; nPixel < 180; ++nPixel) {
            const int nOnCanvas = (1 + nPixel / 20) * 30 + 3 + nPixel % 20;
            EXPECT_EQ(mediadata.plane[0][nOnCanvas], 16 * picture.listPixels[nPixel] + 1);
            EXPECT_EQ(mediadata.plane[3][nOnCanvas], picture.listPixels[nPixel] == 0 ? 0 : 240);
        }
        ExpectSame();
    }
    Init(30, 12);
    for (const std::uint8_t nByte : unit) {
        EXPECT_TRUE(IsTransparent());
        Feed({nByte});
        ExpectSame();
    }
    EXPECT_FALSE(IsTransparent());
}

TEST_F(SubtitleDecoderTest, CodesOfAllFourSizes)
{
    Init(300, 2);
    RawUnit unit = RawUnit::InArea(0, 0, 300, 2);
    unit.strTop = "F"
                  "13"
                  "041"
                  "0102"
                  "000 0"; // runs of 3, 4, 16 and 64, and an end of line
    Feed(unit);
    EXPECT_EQ(Row(0), std::string(3, '3') + std::string(4, '3') + std::string(16, '1') + std::string(64, '2') +
                          std::string(213, '.'));
    unit.strTop = "4"
                  "3E"
                  "0FD"
                  "03FF"
                  "0000"; // a run of 1, then the longest of each size: 15, 63, and 255, which goes past the line's end
    unit.strBottom = "03FD"
                     "0000";
    Feed(unit);
    EXPECT_EQ(Row(0), "0" + std::string(15, '2') + std::string(63, '1') + std::string(221, '3'));
    EXPECT_EQ(Row(1), std::string(255, '1') + std::string(45, '.'));
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, Nibbles041AreARunOf16OfCode1)
{
    Init(20, 2);
    RawUnit unit = RawUnit::InArea(0, 0, 20, 2);
    unit.strTop = "041 0002";
    Feed(unit);
    EXPECT_EQ(Row(0), "1111111111111111....");
    EXPECT_EQ(Row(1), "....................");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, EndOfLineLeavesTheRestUnpainted)
{
    Init(8, 4);
    RawUnit unit = RawUnit::InArea(0, 0, 8, 4);
    unit.strTop = "E 0002 0"
                  "D 0000 0"; // the next line begins at a byte
    Feed(unit);
    EXPECT_EQ(Row(0), "222.....");
    EXPECT_EQ(Row(1), "........");
    EXPECT_EQ(Row(2), "111.....");
    ExpectSame();
    unit.strTop = "E 00FF F"
                  "D 0000 0"; // what follows the two zero nibbles of an end of line is dropped, whatever it is
    Feed(unit);
    EXPECT_EQ(Row(0), "222.....");
    EXPECT_EQ(Row(2), "111.....");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, RunPastTheLineEndSkipsTheNextLinesFirstPixels)
{
    Init(10, 4);
    RawUnit unit = RawUnit::InArea(0, 0, 10, 4);
    unit.strTop = "3D"
                  "E 0002 0"; // 15 pixels, then 3
    Feed(unit);
    EXPECT_EQ(Row(0), "1111111111");
    EXPECT_EQ(Row(1), "..........");
    EXPECT_EQ(Row(2), ".....222..");
    EXPECT_EQ(mediadata.plane[0][20], 0); // not written to, rather than transparent
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, RunPastMoreThanALineFillsNothingOfTheNext)
{
    Init(10, 8);
    RawUnit unit = RawUnit::InArea(0, 0, 10, 8);
    unit.strTop = "06D0"
                  "60"
                  "E0"; // a run of 27 leads to column 17 of the next line, so the run of 1 ends that line
    Feed(unit);
    EXPECT_EQ(Row(0), "1111111111");
    EXPECT_EQ(Row(2), "..........");
    EXPECT_EQ(Row(4), "........22");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, RunThatEndsALineDropsTheHalfReadByte)
{
    Init(9, 4);
    RawUnit unit = RawUnit::InArea(0, 0, 9, 4);
    unit.strTop = "DDD"
                  "F"
                  "ED"; // the third code ends the line in the middle of a byte
    Feed(unit);
    EXPECT_EQ(Row(0), "111111111");
    EXPECT_EQ(Row(2), "222111...");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, AreaOfHeight1HasNoBottomField)
{
    Init(8, 3);
    RawUnit unit = RawUnit::InArea(0, 1, 8, 1);
    unit.strTop = Line8 + "22";
    unit.strBottom = "2323";
    Feed(unit);
    EXPECT_EQ(Row(0), "........");
    EXPECT_EQ(Row(1), "11111111");
    EXPECT_EQ(Row(2), "........");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, TopFieldEndsWithTheAreaTheBottomFieldDoesNot)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strTop = Line8 + "C5C5C"; // not read, or the bottom field would begin in the middle of its first byte
    unit.strBottom = "22 DD D1";   // all read, though only the first byte shows
    unit.strGap = "ABCDEF01";
    Bytes bytes = unit.Encode();
    bytes.insert(bytes.end(), 4, 0);
    Feed(bytes);
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(Row(1), "22222222");
    EXPECT_EQ(Held(), FromHex("ABCDEF01")); // the pixel data was read up to the bound
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, FieldsStop4BytesBeforeTheControlArea)
{
    Init(8, 8);
    RawUnit unit = RawUnit::InArea(0, 0, 8, 8);
    unit.strTop = "21 21 21 21";
    unit.strBottom = "22 22 22 22";
    unit.strGap = "000000";
    Feed(unit);
    EXPECT_EQ(Row(0) + Row(2) + Row(4) + Row(6), std::string(32, '1'));
    EXPECT_EQ(Row(1), "22222222");
    EXPECT_EQ(Row(5), "22222222");
    EXPECT_EQ(Row(7), "........"); // its byte lies beyond the bound
    ExpectSame();
    unit.strGap = "";
    Feed(unit);
    EXPECT_EQ(Row(1) + Row(3) + Row(5) + Row(7), std::string(32, '.'));
    ExpectSame();
    unit.strTop = "";
    Feed(unit);
    EXPECT_TRUE(IsTransparent());
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, NibbleLeftFromTheTopFieldBeginsTheBottomField)
{
    Init(20, 2);
    RawUnit unit = RawUnit::InArea(0, 0, 20, 2);
    unit.strTop = "F5";    // read as the bottom field, from its second nibble on
    unit.strBottom = "61"; // read as the top field, which the bound ends in the middle of a byte
    unit.strGap = "D0000000";
    unit.nOffset1 = 5;
    unit.nOffset2 = 4;
    Feed(unit);
    EXPECT_EQ(Row(0), "21111111............");
    EXPECT_EQ(Row(1), "121111111...........");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, RowsOfVisiblePixelsAreCountedAfterTheLineChange)
{
    Init(8, 20);
    RawUnit unit = RawUnit::InArea(0, 3, 8, 8);
    unit.strTop = "D 0000 0"; // visible, but does not end its line
    Feed(unit);
    EXPECT_EQ(mediadata.top, 3);
    EXPECT_EQ(mediadata.bottom, 3);
    ExpectSame();
    unit.strTop = Line8; // ends its line, so the next row of the field counts
    Feed(unit);
    EXPECT_EQ(Row(3), "11111111");
    EXPECT_EQ(mediadata.top, 5);
    EXPECT_EQ(mediadata.bottom, 5);
    ExpectSame();
    unit.strBottom = "21 21 21 21";
    Feed(unit);
    EXPECT_EQ(mediadata.top, 5);
    EXPECT_EQ(mediadata.bottom, 12); // a row below the area's last, 10
    ExpectSame();
    unit.y1 = 12;
    unit.y2 = 19;
    Feed(unit);
    EXPECT_EQ(mediadata.top, 14);
    EXPECT_EQ(mediadata.bottom, 19); // but never below the canvas
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, UnitWithNoVisiblePixelLeavesTopBeyondBottom)
{
    Init(8, 20);
    RawUnit unit = RawUnit::InArea(0, 3, 8, 8);
    unit.strTop = Line8;
    unit.nContrasts = 0xFF0F;
    Feed(unit);
    EXPECT_TRUE(IsTransparent());
    EXPECT_EQ(mediadata.top, 23);
    EXPECT_EQ(mediadata.bottom, 3);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, PixelsOfAnEarlierUnitStayButHidden)
{
    Init(8, 2);
    Feed(Unit8x2());
    RawUnit unit = RawUnit::InArea(4, 0, 2, 2);
    unit.strTop = "A 0000 0";
    Feed(unit);
    EXPECT_EQ(Row(0), "....22..");
    EXPECT_EQ(Row(1), "........");
    for (int n = 0; n < 16; ++n) {
        const unsigned k = n >= 8 || n == 4 || n == 5 ? 2 : 1;
        EXPECT_EQ(mediadata.plane[0][n], 16 * k + 1);
        EXPECT_EQ(mediadata.plane[1][n], 0x50 + k);
        EXPECT_EQ(mediadata.plane[2][n], 0xA0 + k);
    }
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, PaletteIsTakenByteByByte)
{
    Init(8, 2);
    for (unsigned k = 0; k < 16; ++k) {
        m_palette[k] = 0xEE000000 | (0x11 + k) << 16 | (0x44 + 3 * k) << 8 | (0x99 + k); // the high byte is ignored
        EXPECT_EQ(subtitle_init(m_palette, 8, 2), 1);
        RawUnit unit = Unit8x2();
        unit.nColours = k << 4;
        const Bytes bytes = unit.Encode();
        subtitle_decode(bytes.data(), static_cast<int>(bytes.size()));
        EXPECT_EQ(mediadata.plane[0][0], 0x99 + k);
        EXPECT_EQ(mediadata.plane[1][0], 0x44 + 3 * k);
        EXPECT_EQ(mediadata.plane[2][0], 0x11 + k);
        EXPECT_EQ(mediadata.plane[3][0], 240);
    }
}

TEST_F(SubtitleDecoderTest, Contrast15IsAlpha240)
{
    Init(12, 2);
    RawUnit unit = RawUnit::InArea(0, 0, 12, 2);
    unit.strTop = "CDEF";
    unit.nContrasts = 0xF000;
    Feed(unit);
    EXPECT_EQ(Row(0), ".........333");
    EXPECT_EQ(mediadata.plane[3][9], 240);
    EXPECT_EQ(mediadata.plane[0][0], 1); // transparent pixels are written, too
    EXPECT_EQ(mediadata.plane[0][3], 17);
    ExpectSame();
    unit.nContrasts = 0x8421;
    unit.nColours = 0xFA50;
    Feed(unit);
    EXPECT_EQ(Row(0), "000555AAAFFF");
    for (int n = 0; n < 12; ++n)
        EXPECT_EQ(mediadata.plane[3][n], 16 << (n / 3));
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, SubtColor0TurnsThePaletteBlackAndWhite)
{
    Init(12, 2);
    RawUnit unit = RawUnit::InArea(0, 0, 12, 2);
    unit.strTop = "CDEF";
    unit.nColours = 0xF210;
    SetHostVariables(0, 0, 3, 12);
    Feed(unit);
    for (int n = 0; n < 12; ++n) {
        EXPECT_EQ(mediadata.plane[0][n], n < 3 ? 0 : 255);
        EXPECT_EQ(mediadata.plane[1][n], 128);
        EXPECT_EQ(mediadata.plane[2][n], 128);
    }
    ExpectSame();
    SetHostVariables(1, 0, 3, 12); // does not bring the palette back; subtitle_init() does
    Feed(unit);
    EXPECT_EQ(mediadata.plane[0][3], 255);
    ExpectSame();
    Init(12, 2);
    EXPECT_EQ(Subt_Color, 1);
    Feed(unit);
    EXPECT_EQ(mediadata.plane[0][3], 17);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, AreasNotWhollyOnTheCanvasShowNothing)
{
    Init(8, 4);
    const int listAreas[][4] = {{0, 8, 0, 3},
                                {0, 7, 0, 4},
                                {8, 8, 0, 0},
                                {0, 0, 4, 4},
                                {4, 3, 0, 3},
                                {0, 7, 2, 1},
                                {4095, 4095, 4095, 4095},
                                {0, 4095, 0, 4095},
                                {7, 0, 3, 0}};
    for (const auto &area : listAreas) { // cppcheck-suppress constVariable; it is constant
        Feed(Unit8x2());
        EXPECT_EQ(Row(0), "11111111");
        RawUnit unit = Unit8x2();
        unit.x1 = area[0];
        unit.x2 = area[1];
        unit.y1 = area[2];
        unit.y2 = area[3];
        Feed(unit);
        EXPECT_TRUE(IsTransparent());
        EXPECT_EQ(mediadata.top, 4);
        EXPECT_EQ(mediadata.bottom, 0);
        ExpectSame();
    }
    RawUnit whole = RawUnit::InArea(0, 0, 8, 4);
    whole.strTop = "21 21";
    whole.strBottom = "22 22";
    Feed(whole);
    EXPECT_EQ(Row(0) + Row(1) + Row(2) + Row(3), "11111111222222221111111122222222");
    ExpectSame();
}
