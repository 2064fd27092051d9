// What the decoder makes of a unit's header, its control area and the bytes after the unit.
#include "support/pictureunit.h"
#include "support/subtitledecodertest.h"

TEST_F(SubtitleDecoderTest, UnknownCommandsHaveNoArguments)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strControl = "00000000 00" + unit.Colours() + "07" + unit.Contrasts() + "0800FE" + unit.Area() + "0707" +
                      unit.Offsets() + "00FF";
    Feed(unit);
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(Row(1), "22222222");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, WordsThatNoCommandSetsAre0)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    Feed(unit);
    unit.strControl = "00000000" + unit.Contrasts() + unit.Area() + unit.Offsets() + "FF";
    Feed(unit);
    EXPECT_EQ(Row(0), "00000000");
    EXPECT_EQ(mediadata.plane[3][0], 240);
    ExpectSame();
    unit.strControl = "00000000" + unit.Colours() + unit.Area() + unit.Offsets() + "FF";
    Feed(unit);
    EXPECT_TRUE(IsTransparent());
    EXPECT_EQ(mediadata.plane[0][0], 17);
    ExpectSame();
    unit.strControl = "00000000" + unit.Colours() + unit.Contrasts() + unit.Offsets() + "FF";
    Feed(unit); // no area: the first pixel
    EXPECT_EQ(Row(0), "1.......");
    ExpectSame();
    unit.strControl = "00000000" + unit.Colours() + unit.Contrasts() + unit.Area() + "FF";
    unit.strBottom = "";
    Feed(unit); // no offsets: both fields begin after the header
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(Row(1), "11111111");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, LastOfTwoCommandsCounts)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strControl = "00000000 03FFFF 04FFFF" + unit.Area() + unit.Offsets() + unit.Colours() + "FF" + "00010000" +
                      unit.Contrasts() + "047770 FF";
    Feed(unit);
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(mediadata.plane[3][0], 112);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, TimesComeFromTheWordAfterEachDelay)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strControl = "0010 0100 01" + unit.Colours() + "FF" + "0020 0200 02 FF";
    Feed(unit);
    EXPECT_EQ(mediadata.start, 2912.0);
    EXPECT_EQ(mediadata.stop, 5825.0);
    ExpectSame();
    unit.strControl = "0010 FFFF 01 FF";
    Feed(unit);
    EXPECT_EQ(mediadata.start, 745642.0);
    EXPECT_EQ(mediadata.stop, 5825.0); // that of the unit before
    ExpectSame();
    Init(8, 2);
    EXPECT_EQ(mediadata.start, 745642.0);
    EXPECT_EQ(mediadata.stop, 5825.0);
}

TEST_F(SubtitleDecoderTest, WalkEndsAtTheSameDelay)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strControl = "0010 0100 01 FF"
                      "0020 0200 01 FF"
                      "0010 0300 02 FF"
                      "0010 0400 02 01 FF"
                      "0040 0500 01 FF";
    Feed(unit);
    EXPECT_EQ(mediadata.start, 5825.0);
    EXPECT_EQ(mediadata.stop, 8738.0);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, SequenceWithoutCommands)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strControl = "0010 0100 FF"
                      "0020 0200 FF"
                      "0030 0300 01 FF";
    Feed(unit);
    EXPECT_EQ(mediadata.start, 8738.0);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, WalkEndsWithTheUnit)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strControl = "0010 0100 01 02 FF"
                      "0020 0200 01 02"; // the unit's last byte is not executed as a command
    Feed(unit);
    EXPECT_EQ(mediadata.start, 5825.0);
    EXPECT_EQ(mediadata.stop, 2912.0);
    ExpectSame();
    for (const char *pszControl : {"00", "0000", "000000", "00000000", "0000000001", "000000000112", "0000000003",
                                   "000000000612", "0000000005123456", "00000000FF"}) {
        unit.strControl = pszControl;
        Feed(unit);
        ExpectSame();
    }
}

TEST_F(SubtitleDecoderTest, HeaderIsReadWhenItIsWhole)
{
    Init(8, 2);
    const Bytes unit = Unit8x2().Encode();
    for (std::size_t n = 0; n < 3; ++n) {
        Feed({unit[n]});
        EXPECT_EQ(decoder.Rdptr, decoder.Rdbfr);
        EXPECT_EQ(decoder.Rdlgth, static_cast<int>(n) + 1);
    }
    Feed(Bytes(unit.begin() + 3, unit.end()));
    EXPECT_EQ(Row(0), "11111111");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, BottomFieldFirst)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.nOffset1 = 5;
    unit.nOffset2 = 4;
    Feed(unit);
    EXPECT_EQ(Row(0), "22222222");
    EXPECT_EQ(Row(1), "11111111");
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, RestIsCarriedOverFromWhereThePixelsEnded)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strGap = "ABCD1234";
    Bytes bytes = unit.Encode();
    bytes.insert(bytes.end(), {0, 0, 0, 7, 8, 9});
    Feed(bytes);
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(Held(), FromHex("ABCD1234 0000"));
    EXPECT_EQ(decoder.Rdptr, decoder.Rdbfr);
    EXPECT_EQ(Get_Short(), 0xABCD);
    EXPECT_EQ(m_plain.GetShort(), 0xABCD);
}

TEST_F(SubtitleDecoderTest, CarriedOverBytesBeginTheNextUnit)
{
    Init(8, 2);
    RawUnit outer = Unit8x2();
    const Bytes inner = PictureUnit::Filled(2, 0, 3, 2, 3).Encode();
    outer.strGap = Hex(inner[0] << 8 | inner[1], 4) + Hex(inner[2] << 8 | inner[3], 4); // the inner unit's header
    Bytes bytes = outer.Encode();
    bytes.insert(bytes.end(), 4, 0);
    Feed(bytes);
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(decoder.Rdlgth, 4);
    ExpectSame();
    Feed(Bytes(inner.begin() + 4, inner.end() - 1));
    EXPECT_EQ(Row(0), "11111111");
    ExpectSame();
    Feed({inner.back()});
    EXPECT_EQ(Row(0), "..333...");
    EXPECT_EQ(Row(1), "..333...");
    EXPECT_EQ(decoder.Rdlgth, 0);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, TwoUnitsInOneAppend)
{
    const Bytes first = PictureUnit::Filled(1, 1, 6, 5).Encode();
    const Bytes second = PictureUnit::Filled(0, 0, 3, 3, 2).Encode();
    Init(8, 8);
    Bytes both(first);
    both.insert(both.end(), second.begin(), second.end());
    Feed(both); // decodes one unit per call, even if two are held
    EXPECT_EQ(decoder.Rdlgth, static_cast<int>(second.size()));
    ExpectSame();
    for (int n = 0; n < 100; ++n) {
        Feed({static_cast<std::uint8_t>(n)});
        ExpectSame();
    }
}

TEST_F(SubtitleDecoderTest, LengthOf0DecodesAUnitThatWasCarriedOver)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strGap = "0009 0004"; // the header of a unit of 9 bytes, which shows nothing
    Bytes bytes = unit.Encode();
    bytes.insert(bytes.end(), 9, 0);
    Feed(bytes);
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(decoder.Rdlgth, 9);
    ExpectSame();
    Feed(Bytes());
    EXPECT_TRUE(IsTransparent());
    EXPECT_EQ(decoder.Rdlgth, 0);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, UnitWithItsControlAreaOutsideIsRefused)
{
    Init(8, 2);
    const Bytes good = Unit8x2().Encode();
    for (const int nControlAt : {0, 3, static_cast<int>(good.size()), static_cast<int>(good.size()) + 1, 0xFFFF}) {
        Feed(good);
        EXPECT_EQ(Row(0), "11111111");
        Bytes bad(good);
        bad[2] = static_cast<std::uint8_t>(nControlAt >> 8);
        bad[3] = static_cast<std::uint8_t>(nControlAt);
        bad.insert(bad.end(), 20, 1);
        Feed(bad);
        EXPECT_TRUE(IsTransparent());
        EXPECT_EQ(mediadata.top, 2);
        EXPECT_EQ(mediadata.bottom, 0);
        EXPECT_EQ(decoder.Rdlgth, 0);
        EXPECT_EQ(decoder.Rdptr, decoder.Rdbfr);
        ExpectSame();
    }
    for (const int nSize : {0, 3, 4}) {
        Feed(good);
        Feed({0, static_cast<std::uint8_t>(nSize), 0, 4, 0, 0, 0, 0});
        EXPECT_TRUE(IsTransparent());
        EXPECT_EQ(decoder.Rdlgth, 0);
        ExpectSame();
    }
    Feed({0, 5, 0, 4, 0}); // the shortest possible unit
    EXPECT_EQ(mediadata.top, 2);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, UnitWithPixelsOutsideIsRefused)
{
    Init(8, 2);
    RawUnit good = Unit8x2();
    const int nSize = static_cast<int>(good.Encode().size());
    for (const bool bTop : {true, false}) {
        for (const int nOffset : {nSize + 1, 0x7FFF, 0x8000, 0xFFFF}) {
            Feed(good);
            EXPECT_EQ(Row(0), "11111111");
            RawUnit bad = good;
            (bTop ? bad.nOffset1 : bad.nOffset2) = nOffset;
            Feed(bad);
            EXPECT_TRUE(IsTransparent());
            EXPECT_EQ(mediadata.top, 2);
            EXPECT_EQ(mediadata.bottom, 0);
            EXPECT_EQ(decoder.Rdlgth, 0);
            ExpectSame();
        }
        RawUnit edge = good; // a valid unit, with one field empty
        (bTop ? edge.nOffset1 : edge.nOffset2) = nSize;
        Feed(edge);
        EXPECT_EQ(Row(0), bTop ? "........" : "11111111");
        EXPECT_EQ(Row(1), bTop ? "22222222" : "........");
        ExpectSame();
    }
}

TEST_F(SubtitleDecoderTest, PixelsMayBeginInTheHeader)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.nOffset1 = 0;
    unit.nOffset2 = 3;
    Feed(unit);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, LongestUnit)
{
    Init(8, 2);
    RawUnit unit = Unit8x2();
    unit.strControl = unit.Control();
    const int nMissing = 65535 - static_cast<int>(unit.Encode().size());
    unit.strControl += "0000"; // the last delay again ends the walk
    unit.strControl.resize(unit.strControl.size() + 2 * nMissing - 4, 'A');
    Bytes bytes = unit.Encode();
    ASSERT_EQ(bytes.size(), 65535U);
    bytes.push_back(0x77);
    Feed(bytes); // exactly what the decoder's buffer holds
    EXPECT_EQ(Row(0), "11111111");
    EXPECT_EQ(decoder.Rdlgth, 1);
    ExpectSame();
}

TEST_F(SubtitleDecoderTest, AppendBeyondTheBufferDropsWhatIsHeld)
{
    Init(8, 2);
    const RawUnit good = Unit8x2();
    for (const int nFirst : {4, 40000, 65534}) {
        Feed(good);
        EXPECT_EQ(Row(0), "11111111");
        Bytes bytes = FromHex("FFFF0010");
        bytes.resize(nFirst);
        Feed(bytes);
        EXPECT_EQ(decoder.Rdlgth, nFirst);
        EXPECT_EQ(Row(0), "11111111");
        Feed(Bytes(65537 - nFirst));
        EXPECT_EQ(decoder.Rdlgth, 0);
        EXPECT_EQ(decoder.Rdptr, decoder.Rdbfr);
        EXPECT_TRUE(IsTransparent());
        EXPECT_EQ(mediadata.top, 2);
        EXPECT_EQ(mediadata.bottom, 0);
        ExpectSame();
    }
    Feed(Bytes(65537));
    EXPECT_EQ(decoder.Rdlgth, 0);
    Feed(good);
    EXPECT_EQ(Row(0), "11111111");
    ExpectSame();
}
