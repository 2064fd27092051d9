// Random units in random pieces on random canvases, compared with the plain decoder.
#include "support/randomunit.h"
#include "support/subtitledecodertest.h"

namespace
{

class RandomUnitsTest : public SubtitleDecoderTest
{
protected:
    /** Feeds bytes in pieces of up to @p nLongest. */
    void FeedInPieces(const Bytes &bytes, int nLongest)
    {
        for (std::size_t nAt = 0; nAt < bytes.size();) {
            const std::size_t nPiece = std::min<std::size_t>(bytes.size() - nAt, 1 + m_random() % nLongest);
            Feed(Bytes(bytes.begin() + nAt, bytes.begin() + nAt + nPiece));
            nAt += nPiece;
            ExpectSame();
            m_nShown += !IsTransparent();
        }
    }

    void PlayHost()
    {
        const int nWidth = Coded_Picture_Width;
        SetHostVariables(m_random() % 8 != 0, static_cast<int>(m_random() % 81) - 40, m_random() % 2 ? 3 : 1,
                         m_random() % 3 ? nWidth : nWidth / 2);
        WriteX();
        ExpectSame();
    }

    /** Sets up a canvas and decodes units on it, while a host calls subtitle_write_x() now and then. */
    void Round(int nUnits)
    {
        const bool bReal = m_random() % 150 == 0;
        Init(bReal ? 720 : 1 + m_random() % (m_random() % 3 ? 24 : 90), bReal ? 576 : 1 + m_random() % 40);
        RandomUnit units(m_random, Coded_Picture_Width, Coded_Picture_Height);
        const int nStyle = static_cast<int>(m_random() % 6);
        Bytes stream;
        for (int n = 0; n < nUnits; ++n) {
            const Bytes unit = units.Make();
            if (nStyle > 2 && !unit.empty()) {
                if (m_random() % 2 == 0) // else the rest of an incomplete unit would swallow many
                    DropInput();
                FeedInPieces(unit, static_cast<int>(unit.size()) + 1 + static_cast<int>(m_random() % 300));
                if (m_random() % 16 == 0)
                    PlayHost();
            } else {
                stream.insert(stream.end(), unit.begin(), unit.end());
            }
        }
        FeedInPieces(stream, nStyle == 0 ? 1000 : nStyle == 1 ? 100 : 5000);
        PlayHost();
        EXPECT_EQ(Get_HalfByte(), m_plain.GetHalfByte());
        EXPECT_EQ(Get_Short(), m_plain.GetShort());
    }

    std::mt19937 m_random{20250817};
    int m_nShown = 0;
};

} // namespace

TEST_F(RandomUnitsTest, AreDecodedAsByThePlainDecoder)
{
    constexpr int Rounds = 6000;
    constexpr int UnitsPerRound = 10;
    for (int n = 0; n < Rounds && !HasFailure(); ++n) {
        SCOPED_TRACE(n);
        Round(UnitsPerRound);
    }
    EXPECT_GT(m_nShown, 20000);
}

TEST_F(RandomUnitsTest, OneByOne)
{
    int nShown = 0;
    for (int n = 0; n < 3000 && !HasFailure(); ++n) {
        SCOPED_TRACE(n);
        if (n % 20 == 0)
            Init(1 + n % 97, 1 + n % 53);
        RandomUnit units(m_random, Coded_Picture_Width, Coded_Picture_Height);
        const Bytes unit = units.Make();
        if (unit.size() < 4)
            continue;
        DropInput();
        Feed(unit);
        ExpectSame();
        nShown += !IsTransparent();
    }
    EXPECT_GT(nShown, 1500);
}
