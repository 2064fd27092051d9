// How an index is read: its header, and the choice of a language.
#include "support/subindextest.h"
#include "vobsub/subtitledecoder.h"

namespace
{

const std::string Palette = "000001, 000002, 000003, 000004, 000005, 000006, 000007, 000008, 000009, 00000a, 00000b, "
                            "00000c, 00000d, 00000e, abcdef, FFFFFF";

class SubIndexHeaderTest : public SubIndexTest
{
protected:
    QSize Size() const { return {m_peer.SubWidth(), m_peer.SubHeight()}; }

    std::vector<unsigned int> Colours() const
    {
        std::vector<unsigned int> listColours;
        for (int k = 0; k < 16; ++k)
            listColours.push_back(m_peer.Palette(k));
        return listColours;
    }

    /** The colours of an index that has this line after a good palette line. */
    std::vector<unsigned int> ColoursBehind(const std::string &line)
    {
        EXPECT_EQ(OpenText("size: 8x8\npalette: " + Palette + "\n" + line + "\nid: en, index: 0\n#\n"), 1);
        return Colours();
    }

    const std::vector<unsigned int> m_listColours = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 0xABCDEF, 0xFFFFFF};
};

const std::string First = "timestamp: 00:00:01:000, filepos: 000000000\n";
const std::string Second = "timestamp: 00:00:02:000, filepos: 000000800\n";
const std::string Third = "timestamp: 00:00:03:000, filepos: 000001000\n";

} // namespace

TEST_F(SubIndexHeaderTest, IsEmptyWhenMade)
{
    EXPECT_FALSE(m_parser.IsTextSub());
    EXPECT_TRUE(m_peer.Items().isEmpty());
    EXPECT_EQ(Size(), QSize(0, 0));
    EXPECT_EQ(Colours(), std::vector<unsigned int>(16, 0));
    EXPECT_TRUE(m_peer.SubFile().isNull());
    EXPECT_EQ(m_peer.Context(), nullptr);
    EXPECT_EQ(m_peer.ImageBuffer(), nullptr);
}

TEST_F(SubIndexHeaderTest, ReadsTheUsualLayout)
{
    ASSERT_EQ(OpenText("# VobSub index file, v7 (do not modify this line!)\n#\nsize: 720x576\norg: 0, 0\npalette: " +
                       Palette + "\nlangidx: 0\n\n# English\nid: en, index: 0\n# Vob/Cell ID: 1, 1 (PTS: 0)\n" + First +
                       "\n" + Second),
              1);
    EXPECT_EQ(Size(), QSize(720, 576));
    EXPECT_EQ(Colours(), m_listColours);
    EXPECT_EQ(Starts(), (std::vector<int>{1000, 2000}));
    EXPECT_EQ(m_peer.Items()[1].strFilePos.toStdString(), "000000800");
    EXPECT_EQ(m_peer.Items()[1].nFilePos, 2048U);
    EXPECT_EQ(m_peer.SubFile().toStdString(), (m_folder.Path() / "a.sub").string());
}

TEST_F(SubIndexHeaderTest, KeepsTheEntriesOfTheLanguageAskedFor)
{
    const std::string text = "size: 720x576\nid: en, index: 0\n" + First + "id: de, index: 1\n" + Second + Third;
    EXPECT_EQ(OpenText(text, 0), 1);
    EXPECT_EQ(Starts(), std::vector<int>{1000});
    EXPECT_EQ(OpenText(text, 1), 1);
    EXPECT_EQ(Starts(), (std::vector<int>{2000, 3000}));
    EXPECT_EQ(OpenText(text, 2), 0);
    EXPECT_TRUE(m_peer.Items().isEmpty());
    EXPECT_EQ(OpenText(text, -1), 0);
}

TEST_F(SubIndexHeaderTest, NumbersOfLanguagesMayBeAnyInAnyOrder)
{
    const std::string text = "size: 720x576\nid: en, index: 31\n" + First + "id: de, index: -1\n" + Second;
    EXPECT_EQ(OpenText(text, 0), 0);
    EXPECT_EQ(OpenText(text, 31), 1);
    EXPECT_EQ(Starts(), std::vector<int>{1000});
    EXPECT_EQ(OpenText(text, -1), 1);
    EXPECT_EQ(Starts(), std::vector<int>{2000});
}

TEST_F(SubIndexHeaderTest, FirstOfTwoLanguagesOfOneNumberCounts)
{
    EXPECT_EQ(OpenText("size: 8x8\nid: en, index: 0\n" + First + "id: de, index: 0\n" + Second), 1);
    EXPECT_EQ(Starts(), std::vector<int>{1000});
}

TEST_F(SubIndexHeaderTest, LanguageWithoutANumberIsNotFound)
{
    for (const char *line :
         {"id: en", "id: en, 0", "id: en, Index: 0", "id: en, index:", "id: en, index: x", "id: en, index: 0x",
          "id: en, index: 0, index: 0", "id: en, index: 0.0", "id: en, index 0", "id: en, index: 99999999999"})
        EXPECT_EQ(OpenText("size: 8x8\n" + (line + ("\n" + First))), 0) << line;
}

TEST_F(SubIndexHeaderTest, NumberOfALanguageIsTrimmed)
{
    for (const char *line : {"id: en, index:0", "id: en, index: \t 0 \t", "id:index:0", "id: , index: +0"})
        EXPECT_EQ(OpenText("size: 8x8\n" + (line + ("\n" + First))), 1) << line;
}

TEST_F(SubIndexHeaderTest, KeysStandAtTheStartOfTheirLineInLowerCase)
{
    for (const char *line : {" id: en, index: 0", "ID: en, index: 0", "Id: en, index: 0", "# id: en, index: 0"})
        EXPECT_EQ(OpenText("size: 8x8\n" + (line + ("\n" + First))), 0) << line;

    for (const char *key : {" size", "Size", "SIZE", "#size", "size "}) {
        EXPECT_EQ(OpenText("size: 8x9\n" + (key + (": 20x30\nid: en, index: 0\n" + First))), 1);
        EXPECT_EQ(Size(), QSize(8, 9)) << key;
    }

    for (const char *key : {" palette", "Palette", "#palette", "palette "})
        EXPECT_EQ(ColoursBehind(std::string(key) + ": 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0"), m_listColours);

    OpenEntries(" " + First + "T" + First.substr(1) + "# " + First + "timestamp 00:00:01:000, filepos: 0\n" + Second);
    EXPECT_EQ(Starts(), std::vector<int>{2000});
}

TEST_F(SubIndexHeaderTest, HeaderAfterTheFirstLanguageIsIgnored)
{
    const std::string late = "size: 20x30\npalette: 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0\n";
    const std::string header = "size: 8x9\npalette: " + Palette + "\n";
    EXPECT_EQ(OpenText(header + "id: en, index: 0\n" + late + First + "id: de, index: 1\n" + late + Second, 1), 1);
    EXPECT_EQ(Size(), QSize(8, 9));
    EXPECT_EQ(Colours(), m_listColours);
    EXPECT_EQ(OpenText(header + "id: en, index: 0\n" + late + First), 1);
    EXPECT_EQ(Size(), QSize(8, 9));
    EXPECT_EQ(OpenText(header + "id: no number\n" + late + "id: en, index: 0\n" + First), 1);
    EXPECT_EQ(Size(), QSize(8, 9));
}

TEST_F(SubIndexHeaderTest, LastHeaderLineOfAKindCounts)
{
    EXPECT_EQ(OpenText("size: 8x9\npalette: 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0\nsize: 20x30\npalette: " +
                       Palette + "\nid: en, index: 0\n" + First),
              1);
    EXPECT_EQ(Size(), QSize(20, 30));
    EXPECT_EQ(Colours(), m_listColours);
}

TEST_F(SubIndexHeaderTest, SizeThatIsNotTwoPartsIsIgnored)
{
    for (const char *size : {"720", "720x576x1", "720*576", "720X576", "", "x720x"}) {
        EXPECT_EQ(OpenText("size: 8x9\nsize: " + (size + ("\nid: en, index: 0\n" + First))), 1);
        EXPECT_EQ(Size(), QSize(8, 9)) << size;
    }
}

TEST_F(SubIndexHeaderTest, SizeIsTrimmed)
{
    EXPECT_EQ(OpenText("size:\t 720 x 576 \nid: en, index: 0\n" + First), 1);
    EXPECT_EQ(Size(), QSize(720, 576));
}

TEST_F(SubIndexHeaderTest, ImpossibleSizeIsRefused)
{
    for (const char *size : {"x", "0x0", "720x", "x576", "720x0", "-720x576", "720x-576", "4097x576", "720x4097",
                             "99999999999x576", "ax576"}) {
        const int nResult = OpenText("size: 8x9\nsize: " + (size + ("\nid: en, index: 0\n" + First)));
        EXPECT_EQ(nResult, 0) << size;
        EXPECT_TRUE(m_peer.Items().isEmpty());
    }
    for (const char *size : {"1x1", "4096x1", "1x4096", "4096x4096"})
        EXPECT_EQ(OpenText("size: " + (size + ("\nid: en, index: 0\n" + First))), 1) << size;
    EXPECT_EQ(Size(), QSize(4096, 4096));
}

TEST_F(SubIndexHeaderTest, MissingSizeIsRefused)
{
    EXPECT_EQ(OpenText("palette: " + Palette + "\nid: en, index: 0\n" + First), 0);
    EXPECT_EQ(Size(), QSize(0, 0));
}

TEST_F(SubIndexHeaderTest, PaletteOfAnotherCountIsIgnored)
{
    const std::string fifteen = "0, 1, 2, 3, 4, 5, 6, 7, 8, 9, a, b, c, d, e";
    EXPECT_EQ(ColoursBehind("palette: " + fifteen), m_listColours);
    EXPECT_EQ(ColoursBehind("palette: " + fifteen + ", f, 0"), m_listColours);
    EXPECT_EQ(ColoursBehind("palette: 0,1,2,3,4,5,6,7,8,9,a,b,c,d,e,f"), m_listColours);
    EXPECT_EQ(ColoursBehind("palette: 0 1 2 3 4 5 6 7 8 9 a b c d e f"), m_listColours);
    EXPECT_EQ(ColoursBehind("palette:"), m_listColours);
    EXPECT_NE(ColoursBehind("palette:" + fifteen + ", f"), m_listColours);
}

TEST_F(SubIndexHeaderTest, ColourThatIsNoNumberIsZero)
{
    EXPECT_EQ(ColoursBehind("palette:   , g0, 12 34, ffffffff, 1ffffffff, #12, 1, 2, 3, 4, 5, 6, 7, 8, 9, red  "),
              (std::vector<unsigned int>{0, 0, 0, 0xFFFFFFFF, 0, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 0}));
}

TEST_F(SubIndexHeaderTest, LanguageOnTheLastLineIsRefusedAndTouchesNothing)
{
    ASSERT_EQ(OpenText("size: 8x9\nid: en, index: 0\n" + First), 1);
    m_peer.SubFile() = QStringLiteral("earlier");
    const unsigned char *const pPlane = mediadata.plane[0];
    for (const char *text : {"size: 20x30\nid: en, index: 0", "size: 20x30\nid: en, index: 0\n",
                             "size: 20x30\nid: en, index: 7\n", "size: 20x30\n"}) {
        EXPECT_EQ(OpenText(text), 0);
        EXPECT_TRUE(m_peer.Items().isEmpty());
        EXPECT_EQ(m_peer.SubFile(), QStringLiteral("earlier"));
        EXPECT_EQ(mediadata.plane[0], pPlane);
        EXPECT_EQ(Coded_Picture_Width, 8);
        EXPECT_EQ(Coded_Picture_Height, 9);
    }
}

TEST_F(SubIndexHeaderTest, MissingFileIsRefused)
{
    EXPECT_EQ(m_parser.Open(QStringLiteral("/missing/a.idx"), 0), 0);
    EXPECT_EQ(m_parser.Open(QString::fromStdString(m_folder.Path().string()), 0), 0);
    EXPECT_EQ(OpenText(""), 0);
    EXPECT_TRUE(m_peer.SubFile().isNull());
}

TEST_F(SubIndexHeaderTest, LanguageWithoutEntriesIsOpened)
{
    EXPECT_EQ(OpenText("size: 8x9\nid: en, index: 0\nid: de, index: 1\n" + First), 1);
    EXPECT_TRUE(m_peer.Items().isEmpty());
    EXPECT_TRUE(m_parser.GetSubtitle(1000).isNull());
    EXPECT_EQ(OpenText("size: 8x9\nid: en, index: 0\n# nothing\n"), 1);
    EXPECT_TRUE(m_peer.Items().isEmpty());
}

TEST_F(SubIndexHeaderTest, PreparesTheDecoder)
{
    ASSERT_EQ(OpenText("size: 12x10\npalette: " + Palette + "\nid: en, index: 0\n" + First), 1);
    EXPECT_EQ(Coded_Picture_Width, 12);
    EXPECT_EQ(Coded_Picture_Height, 10);
    // A pixel shows the decoder's palette: entry 14 is 0xABCDEF.
    Init_RleOutput(0, 0, 2, 1, 0x00F0, 0x00E0);
    Rle_Output(1 << 2 | 1);
    EXPECT_EQ(mediadata.plane[0][0], 0xEF);
    EXPECT_EQ(mediadata.plane[1][0], 0xCD);
    EXPECT_EQ(mediadata.plane[2][0], 0xAB);
    EXPECT_EQ(mediadata.plane[3][0], 240);
}

TEST_F(SubIndexHeaderTest, ReopenedParserKeepsTheEarlierHeader)
{
    ASSERT_EQ(OpenText("size: 12x10\npalette: " + Palette + "\nid: en, index: 0\n" + First + Second), 1);
    ASSERT_EQ(OpenText("id: en, index: 0\n" + Third), 1);
    EXPECT_EQ(Starts(), std::vector<int>{3000});
    EXPECT_EQ(Size(), QSize(12, 10));
    EXPECT_EQ(Colours(), m_listColours);
    ASSERT_EQ(OpenText("size: 20x30\nid: en, index: 0\n" + Third), 1);
    EXPECT_EQ(Size(), QSize(20, 30));
    EXPECT_EQ(Colours(), m_listColours);
    EXPECT_EQ(Coded_Picture_Width, 20);
}

TEST_F(SubIndexHeaderTest, ReopeningForgetsTheEntriesEvenWhenItFails)
{
    ASSERT_EQ(OpenText("size: 12x10\nid: en, index: 0\n" + First), 1);
    EXPECT_EQ(m_parser.Open(QStringLiteral("/missing/a.idx"), 0), 0);
    EXPECT_TRUE(m_peer.Items().isEmpty());
}

TEST_F(SubIndexHeaderTest, OnlyTheLastThreeCharactersOfTheNameAreReplaced)
{
    const std::string text = "size: 8x9\nid: en, index: 0\n" + First;
    const std::pair<const char *, const char *> names[] = {{"A.IDX", "A.sub"},
                                                           {"idx.idx.Idx", "idx.idx.sub"},
                                                           {"dotless", "dotlsub"},
                                                           {"a.text", "a.tsub"},
                                                           {"\xC3\xBC.idx", "\xC3\xBC.sub"}};
    for (const auto &[name, expected] : names) {
        EXPECT_EQ(m_parser.Open(QString::fromStdString(m_folder.Write(name, text)), 0), 1);
        EXPECT_EQ(m_peer.SubFile().toStdString(), (m_folder.Path() / expected).string());
    }
}

TEST_F(SubIndexHeaderTest, ReadsFilesWithAByteOrderMark)
{
    const std::string text = "size: 720x576\nid: en, index: 0\n" + First + Second;
    EXPECT_EQ(OpenText("\xEF\xBB\xBF" + text), 1);
    EXPECT_EQ(Size(), QSize(720, 576));
    EXPECT_EQ(Starts(), (std::vector<int>{1000, 2000}));

    std::string wide = "\xFF\xFE";
    for (const char character : text)
        wide += {character, '\0'};
    SubParser other;
    EXPECT_EQ(other.Open(QString::fromStdString(m_folder.Write("wide.idx", wide)), 0), 1);
    const SubParserPeer peer(other);
    EXPECT_EQ(peer.SubWidth(), 720);
    ASSERT_EQ(peer.Items().size(), 2);
    EXPECT_EQ(peer.Items()[1].nStart, 2000);
    EXPECT_EQ(peer.Items()[1].nFilePos, 2048U);
}

TEST_F(SubIndexHeaderTest, ReadsFilesWithCarriageReturns)
{
    EXPECT_EQ(OpenText("size: 720x576\r\npalette: " + Palette +
                       "\r\nid: en, index: 0\r\ntimestamp: 00:00:01:000, filepos: 00000a800\r\n"),
              1);
    EXPECT_EQ(Size(), QSize(720, 576));
    EXPECT_EQ(Colours(), m_listColours);
    EXPECT_EQ(m_peer.Items().value(0).nFilePos, 43008U);
    EXPECT_EQ(m_peer.Items().value(0).strFilePos.toStdString(), "00000a800");
}
