#pragma once

#include "support/decoderpair.h"
#include "support/rawunit.h"

#include <gtest/gtest.h>

#include <algorithm>

/** A pair of decoders with checks for tests. */
class SubtitleDecoderTest : public testing::Test, protected DecoderPair
{
protected:
    using Bytes = DecoderPair::Bytes;

    void Init(int nWidth, int nHeight) { ASSERT_EQ(DecoderPair::Init(nWidth, nHeight), 1); }

    /** Two lines, one of palette entry 1 and one of entry 2. */
    static RawUnit Unit8x2()
    {
        RawUnit unit = RawUnit::InArea(0, 0, 8, 2);
        unit.strTop = "21";
        unit.strBottom = "22";
        return unit;
    }

    void Feed(const Bytes &bytes) { ASSERT_EQ(DecoderPair::Feed(bytes), 1); }
    void Feed(const RawUnit &unit) { Feed(unit.Encode()); }

    void WriteX()
    {
        const SubtitlePlanes planes = DecoderPair::WriteX();
        EXPECT_EQ(planes.top, mediadata.top);
        EXPECT_EQ(planes.bottom, mediadata.bottom);
    }

    void ExpectSame() const
    {
        if (IsSame())
            return;
        EXPECT_EQ(Held(), m_plain.Held());
        EXPECT_EQ(Coded_Picture_Width, m_plain.m_nCanvasWidth);
        EXPECT_EQ(Coded_Picture_Height, m_plain.m_nCanvasHeight);
        EXPECT_EQ(mediadata.top, m_plain.m_nTop);
        EXPECT_EQ(mediadata.bottom, m_plain.m_nBottom);
        EXPECT_EQ(mediadata.start, m_plain.m_fStart);
        EXPECT_EQ(mediadata.stop, m_plain.m_fStop);
        for (int n = 0; n < 4; ++n)
            EXPECT_TRUE(IsPlane(mediadata.plane[n], m_plain.m_listPlanes[n])) << "plane " << n;
        for (int n = 0; n < 3; ++n)
            EXPECT_TRUE(IsPlane(mediadata.out[n], m_plain.m_listOut[n])) << "output plane " << n;
        ADD_FAILURE() << "the decoders differ";
    }

    /** A canvas row as text: for each pixel the digit of its palette entry, '.' if it is transparent. */
    static std::string Row(int nRow)
    {
        std::string strRow;
        for (int n = nRow * Coded_Picture_Width; n < (nRow + 1) * Coded_Picture_Width; ++n)
            strRow += mediadata.plane[3][n] ? "0123456789ABCDEF"[mediadata.plane[0][n] >> 4] : '.';
        return strRow;
    }

    static bool IsTransparent()
    {
        const std::uint8_t *const pAlpha = mediadata.plane[3];
        return std::all_of(pAlpha, pAlpha + Canvas_Size(), [](std::uint8_t nAlpha) { return nAlpha == 0; });
    }
};
