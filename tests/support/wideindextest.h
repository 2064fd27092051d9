#pragma once

#include "support/subindextest.h"
#include "vobsub/subtitledecoder.h"

/** Tests with UTF-16 indexes. Only one byte order can be tested per process, see ReadLineW(). */
class WideIndexTest : public SubIndexTest
{
protected:
    explicit WideIndexTest(bool bBigEndian) : m_bBigEndian(bBigEndian) {}

    /** A text in UTF-16 after its byte-order mark. */
    static std::string Encode(const std::u16string &text, bool bBigEndian)
    {
        std::string bytes;
        for (const char16_t unit : u'\xFEFF' + text) {
            const char high = static_cast<char>(unit >> 8);
            const char low = static_cast<char>(unit & 0xFF);
            bytes += bBigEndian ? std::string{high, low} : std::string{low, high};
        }
        return bytes;
    }

    int OpenWide(const std::u16string &text, int nStream = 0) { return OpenText(Encode(text, m_bBigEndian), nStream); }

    void ExpectRead()
    {
        const std::u16string text =
            u"# \x4E16\x754C\r\nsize: 720x576\r\npalette: 000001, 000002, 000003, 000004, 000005, "
            u"000006, 000007, 000008, 000009, 00000a, 00000b, 00000c, 00000d, 00000e, abcdef, "
            u"FFFFFF\r\n\r\nid: \x0A0D, index: 3\r\n"
            u"timestamp: 00:00:01:020, filepos: 000000000\r\n# \x000A\r\n"
            u"timestamp: 01:02:\r03:456, filepos: 00000a800\r\n"
            u"id: de, index: 0\r\ntimestamp: 00:00:07:000, filepos: 123456789";
        ASSERT_EQ(OpenWide(text, 3), 1);
        EXPECT_EQ(m_peer.SubWidth(), 720);
        EXPECT_EQ(m_peer.SubHeight(), 576);
        for (unsigned k = 0; k < 14; ++k)
            EXPECT_EQ(m_peer.Palette(static_cast<int>(k)), k + 1);
        EXPECT_EQ(m_peer.Palette(14), 0xABCDEFU);
        EXPECT_EQ(m_peer.Palette(15), 0xFFFFFFU);
        EXPECT_EQ(Starts(), (std::vector<int>{1020, 3723456}));
        EXPECT_EQ(m_peer.Items()[1].strFilePos.toStdString(), "00000a800");
        EXPECT_EQ(m_peer.Items()[1].nFilePos, 43008U);
        EXPECT_EQ(m_peer.SubFile().toStdString(), (m_folder.Path() / "a.sub").string());

        ASSERT_EQ(OpenWide(text, 0), 1);
        EXPECT_EQ(Starts(), std::vector<int>{7000});
        EXPECT_EQ(m_peer.Items()[0].nFilePos, 0x123456789U);
    }

    void ExpectLanguageOnTheLastLineRefused()
    {
        const std::u16string text = u"size: 8x9\nid: de, index: 1\ntimestamp: 00:00:01:000, filepos: 000000000\n"
                                    u"id: en, index: 0";
        ASSERT_EQ(OpenWide(text, 1), 1);
        EXPECT_EQ(Starts(), std::vector<int>{1000});
        m_peer.SubFile() = QStringLiteral("earlier");
        const unsigned char *const pPlane = mediadata.plane[0];
        for (const char16_t *pEnd : {u"", u"\n", u"\r\n", u"\r"}) {
            EXPECT_EQ(OpenWide(text + pEnd), 0);
            EXPECT_TRUE(m_peer.Items().isEmpty());
        }
        EXPECT_EQ(OpenText(Encode(text, m_bBigEndian) + '\0'), 0); // half a unit after it
        EXPECT_EQ(m_peer.SubFile(), QStringLiteral("earlier"));
        EXPECT_EQ(mediadata.plane[0], pPlane);

        EXPECT_EQ(OpenWide(text + u"\n\n"), 1); // an empty line after it
        EXPECT_TRUE(m_peer.Items().isEmpty());
        EXPECT_EQ(m_peer.SubFile().toStdString(), (m_folder.Path() / "a.sub").string());
    }

    const bool m_bBigEndian;
};
