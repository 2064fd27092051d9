#include "subburntest.h"

#include "support/pictureunit.h"

#include <cstdio>

namespace
{

/** A language of an index: its number, and its pictures with their times in milliseconds. */
struct Language {
    int nIndex;
    std::string strId;
    std::vector<std::pair<int, PictureUnit>> listPictures;
    std::string strTitle = {};
};

const char *const Palette = "palette: 000000, c0c0c0, 808080, 404040, 000000, 000000, 000000, 000000, "
                            "000000, 000000, 000000, 000000, 000000, 000000, 000000, 000000\n";
const std::string Columns = "track  codec         language  title  cues        first         last\n";

class VobSubTest : public SubburnTest
{
protected:
    VobSubTest() { m_strSubtitles.clear(); }

    /** Writes a VobSub pair. @return the full name of the index. */
    std::string Pair(const std::string &strName, const std::vector<Language> &listLanguages,
                     const std::string &strSize = "size: 320x180\n", const std::string &strPalette = Palette) const
    {
        std::string strIndex = "# VobSub index file, v7 (do not modify this line!)\n" + strSize + strPalette;
        std::string strPictures;
        for (const Language &language : listLanguages) {
            strIndex += "\nid: " + language.strId + ", index: " + std::to_string(language.nIndex) + "\n";
            if (!language.strTitle.empty())
                strIndex += "alt: " + language.strTitle + "\n";
            for (const auto &[nMilliseconds, unit] : language.listPictures) {
                std::array<char, 64> listLine{};
                (void)std::snprintf(listLine.data(), listLine.size(), "timestamp: 00:00:%02d:%03d, filepos: %09zx\n",
                                    nMilliseconds / 1000, nMilliseconds % 1000, strPictures.size());
                strIndex += listLine.data();
                strPictures += Packet(language.nIndex, nMilliseconds, unit);
            }
            // The library reads 8192 bytes for the last picture and decodes everything in them, so add padding.
            strPictures += std::string("\0\0\1\xbe\x20\0", 6) + std::string(0x2000, '\xff');
        }
        m_folder.Write(strName + ".sub", strPictures);
        return m_folder.Write(strName + ".idx", strIndex);
    }

    /** One language: a picture at the bottom from 0.4 seconds on, one at the top from 1.2 seconds on. */
    std::string UsualPair(const std::string &strName, const std::string &strSize = "size: 320x180\n") const
    {
        return Pair(
            strName,
            {{0, "en", {{400, PictureUnit::Filled(100, 120, 80, 20)}, {1200, PictureUnit::Filled(40, 20, 30, 10)}}}},
            strSize);
    }

    /** Two languages, with the indexes 2 and 5; the second one's pictures are at the right edge. */
    std::string TwoLanguages() const
    {
        return Pair("two",
                    {{2, "en", {{400, PictureUnit::Filled(20, 120, 80, 20)}}},
                     {5,
                      "de",
                      {{500, PictureUnit::Filled(240, 20, 80, 20)}, {1500, PictureUnit::Filled(240, 60, 80, 20)}},
                      "Gr\xc3\xbc\xc3\x9f"
                      "e"}});
    }

    /** Tracks 0 and 1, whose pictures lie in turn. @param strBefore  a language before them in the index. */
    std::string TracksInTurn(const std::string &strBefore = "") const
    {
        const PictureUnit first = PictureUnit::Filled(20, 120, 80, 20);
        const PictureUnit second = PictureUnit::Filled(240, 20, 80, 20);
        std::string strPictures;
        std::array<std::string, 2> listTracks;
        for (const auto &[nTrack, nMilliseconds] : {std::pair(0, 400), {1, 400}, {0, 1200}, {1, 1200}}) {
            std::array<char, 64> listLine{};
            (void)std::snprintf(listLine.data(), listLine.size(), "timestamp: 00:00:%02d:%03d, filepos: %09zx\n",
                                nMilliseconds / 1000, nMilliseconds % 1000, strPictures.size());
            listTracks[nTrack] += listLine.data();
            strPictures += Packet(nTrack, nMilliseconds, nTrack == 0 ? first : second);
        }
        m_folder.Write("turns.sub", strPictures);
        return m_folder.Write("turns.idx", std::string("size: 320x180\n") + Palette + strBefore + "id: en, index: 0\n" +
                                               listTracks[0] + "id: de, index: 1\n" + listTracks[1]);
    }

    std::string GreyClip(const std::string &strName = "in.mkv") const
    {
        return Clip(strName, {"-f", "lavfi", "-i", "color=c=0x505050:s=320x180:r=25:d=2", "-c:v", "ffv1"});
    }

    /** Two seconds of burnt raw frames, 25 per second, all bytes 80 before. With nTrack -1, --track is not given. */
    std::vector<std::string> Piped(const std::string &strIndex, int nTrack = -1, const Arguments &listOptions = {})
    {
        const size_t nFrame = 320 * 180 * 3;
        m_strSubtitles = strIndex;
        Arguments listArguments = {"--pipe", "320x180@25", "--quiet"};
        if (nTrack >= 0)
            listArguments.insert(listArguments.end(), {"--track", std::to_string(nTrack)});
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        const Outcome outcome = Subburn(listArguments, std::string(nFrame * 50, '\x50'));
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        EXPECT_EQ(outcome.strOut.size(), nFrame * 50);
        std::vector<std::string> listFrames;
        for (size_t n = 0; n < 50; ++n)
            listFrames.push_back(outcome.strOut.substr(n * nFrame, nFrame));
        return listFrames;
    }

    /** Bounds of what has changed in such a raw frame. */
    static Bounds Changed(const std::string &strFrame)
    {
        return Difference(strFrame, std::string(320 * 180 * 3, '\x50'), 320, 3);
    }

    void ExpectFailure(const std::string &strIndex, const std::string &strLine, const Arguments &listOptions = {})
    {
        m_strSubtitles = strIndex;
        Arguments listArguments = {"--pipe", "320x180@25"};
        listArguments.insert(listArguments.end(), listOptions.begin(), listOptions.end());
        const Outcome outcome = Subburn(listArguments);
        EXPECT_EQ(outcome.nExit, 2);
        EXPECT_EQ(outcome.strError, "subburn: " + strLine + "\n");
        EXPECT_EQ(outcome.strOut, "");
    }

    void ExpectList(const std::string &strFile, const std::string &strText) const
    {
        const Outcome outcome = ChildProcess::Run({SUBBURN_PROGRAM, "--list", strFile});
        EXPECT_EQ(outcome.nExit, 0);
        EXPECT_EQ(outcome.strError, "");
        EXPECT_EQ(outcome.strOut, strText);
    }

    /** A pack with the picture in a single packet with a time stamp. */
    static std::string Packet(int nIndex, int nMilliseconds, const PictureUnit &unit)
    {
        const std::vector<std::uint8_t> listUnit = unit.Encode();
        const std::size_t nLength = 3 + 5 + 1 + listUnit.size();
        const unsigned nStamp = nMilliseconds * 90;
        std::vector<unsigned> listBytes = {0, 0, 1, 0xBA, 0x44, 0, 4, 0, 4, 1, 1, 0x89, 0xC3, 0xF8};
        listBytes.insert(listBytes.end(), {0, 0, 1, 0xBD, static_cast<unsigned>(nLength >> 8),
                                           static_cast<unsigned>(nLength & 255), 0x81, 0x80, 5});
        // The PTS: 33 bits in units of 1/90000 s, in three groups that each end in a marker bit.
        for (const unsigned nGroup :
             {0x20 + (nStamp >> 30) * 2, nStamp >> 22, nStamp >> 15 << 1, nStamp >> 7, nStamp << 1})
            listBytes.push_back(nGroup & 255);
        for (const std::size_t nMarked : {5U, 3U, 1U})
            listBytes[listBytes.size() - nMarked] |= 1;
        listBytes.push_back(0x20 + nIndex);
        listBytes.insert(listBytes.end(), listUnit.begin(), listUnit.end());
        return {listBytes.begin(), listBytes.end()};
    }
};

void ExpectBounds(const Bounds &bounds, int nLeft, int nTop, int nWidth, int nHeight, const std::string &strWhere)
{
    EXPECT_EQ(bounds.nLeft, nLeft) << strWhere;
    EXPECT_EQ(bounds.nTop, nTop) << strWhere;
    EXPECT_EQ(bounds.nRight, nLeft + nWidth) << strWhere;
    EXPECT_EQ(bounds.nBottom, nTop + nHeight) << strWhere;
}

} // namespace

TEST_F(VobSubTest, PicturesAreBurntWhileTheyAreDue)
{
    const std::string strInput = GreyClip();
    m_strSubtitles = UsualPair("a");
    const Outcome outcome = Subburn({"--codec", "ffv1", strInput, File("out.mkv")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, "");
    EXPECT_EQ(outcome.strOut, File("out.mkv") + ": 50 frames, 40 with a subtitle\n");
    const auto listClear = Frames(strInput, "gray");
    const auto listBurnt = Frames(File("out.mkv"), "gray");
    ASSERT_EQ(listBurnt.size(), 50U);
    for (size_t n = 0; n < listBurnt.size(); ++n) {
        const Bounds bounds = Difference(listBurnt[n], listClear[n], 320);
        const std::string strWhere = "frame " + std::to_string(n);
        if (n < 10)
            EXPECT_TRUE(bounds.Empty()) << strWhere;
        else if (n <= 30) // At the time at which the second begins, the first still shows.
            ExpectBounds(bounds, 100, 120, 80, 20, strWhere);
        else
            ExpectBounds(bounds, 40, 20, 30, 10, strWhere);
    }
}

TEST_F(VobSubTest, PipeBurnsGreysAlmostOpaquely)
{
    const auto listFrames = Piped(UsualPair("a"), -1, {"--exact"});
    ExpectBounds(Changed(listFrames[10]), 100, 120, 80, 20, "");
    // The library converts a picture's contrast of 15 to an opacity of 240.
    const std::string strRow(static_cast<size_t>(80) * 3, static_cast<char>((240 * 0xC0 + 15 * 80) / 255));
    for (size_t nRow = 120; nRow < 140; ++nRow)
        EXPECT_TRUE(listFrames[10].substr((nRow * 320 + 100) * 3, strRow.size()) == strRow) << nRow;
}

TEST_F(VobSubTest, PipeBurnsTheColoursOfThePalette)
{
    const std::string strFrame = Piped(UsualPair("a"))[10];
    ExpectBounds(Changed(strFrame), 100, 120, 80, 20, "");
    const std::string strRow(static_cast<size_t>(80) * 3, static_cast<char>(0xC0));
    for (size_t nRow = 120; nRow < 140; ++nRow)
        EXPECT_TRUE(strFrame.substr((nRow * 320 + 100) * 3, strRow.size()) == strRow) << nRow;
}

TEST_F(VobSubTest, PicturesWithoutBlueAreNamedWhereTheExactLookShowsNothingOfThem)
{
    m_strSubtitles = Pair("yellow", {{0, "en", {{400, PictureUnit::Filled(100, 120, 80, 20)}}}}, "size: 320x180\n",
                          "palette: 000000, ffff00, ff0000, 00ff00\n");
    const std::string strInput = GreyClip();
    const std::string strWarning = "subburn: warning: " + m_strSubtitles +
                                   ": at 40 frames a picture was due whose colours have no blue; --exact shows "
                                   "nothing of it\n";
    Outcome outcome = Subburn({"--exact", "--codec", "ffv1", strInput, File("exact.mkv")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strError, strWarning);
    EXPECT_EQ(outcome.strOut, File("exact.mkv") + ": 50 frames, 0 with a subtitle\n");
    outcome = Subburn({"--codec", "ffv1", strInput, File("natural.mkv")});
    EXPECT_EQ(outcome.strError, "");
    EXPECT_EQ(outcome.strOut, File("natural.mkv") + ": 50 frames, 40 with a subtitle\n");
}

TEST_F(VobSubTest, TheLastPictureStaysForThreeSeconds)
{
    m_strSubtitles = Pair("a", {{0, "en", {{1000, PictureUnit::Filled(100, 120, 80, 20)}}}});
    const size_t nFrame = 320 * 180 * 3;
    const std::string strInput(nFrame * 6, '\x50');
    const Outcome outcome = Subburn({"--pipe", "320x180@1"}, strInput);
    EXPECT_EQ(outcome.strError, "standard output: 6 frames, 4 with a subtitle\n");
    ASSERT_EQ(outcome.strOut.size(), strInput.size());
    for (size_t n = 0; n < 6; ++n)
        EXPECT_EQ(Changed(outcome.strOut.substr(n * nFrame, nFrame)).Empty(), n == 0 || n == 5) << n;
}

TEST_F(VobSubTest, SnapshotsCarryThePicture)
{
    const std::string strInput = GreyClip();
    m_strSubtitles = UsualPair("a");
    const Outcome outcome = Subburn({"--snapshot", "1.5", "--snapshot", "0.2", strInput, File("a.png")});
    EXPECT_EQ(outcome.nExit, 0);
    EXPECT_EQ(outcome.strOut, File("a-1.png") + ": the picture at 0:00:01.480, with a subtitle\n" + File("a-2.png") +
                                  ": the picture at 0:00:00.200, without a subtitle\n");
    ExpectBounds(Difference(Frames(File("a-1.png"), "rgb24").front(), Frames(File("a-2.png"), "rgb24").front(), 320, 3),
                 40, 20, 30, 10, "");
}

TEST_F(VobSubTest, PicturesGrowWithTheVideo)
{
    const Bounds bounds = Changed(Piped(UsualPair("a", "size: 640x360\n"))[20]);
    EXPECT_NEAR(bounds.nLeft, 50, 2);
    EXPECT_NEAR(bounds.nTop, 60, 2);
    EXPECT_NEAR(bounds.nRight, 90, 2);
    EXPECT_NEAR(bounds.nBottom, 70, 2);
}

TEST_F(VobSubTest, PositionAndOpacityCountForPicturesToo)
{
    const std::string strIndex = UsualPair("a");
    ExpectBounds(Changed(Piped(strIndex, -1, {"--position", "75"})[20]), 100, 102, 80, 20, "");
    const std::string strFaint = Piped(strIndex, -1, {"--opacity", "128"})[20];
    ExpectBounds(Changed(strFaint), 100, 120, 80, 20, "");
    EXPECT_NEAR(static_cast<unsigned char>(strFaint[(130 * 320 + 140) * 3]), (128 * 0xC0 + 127 * 80) / 255.0, 1);
    // In the exact look, the library applies the opacity twice.
    const std::string strExact = Piped(strIndex, -1, {"--opacity", "128", "--exact"})[20];
    const int nOnce = 240 * 128 / 255;
    EXPECT_EQ(static_cast<unsigned char>(strExact[(130 * 320 + 140) * 3]),
              (128 * nOnce / 255 * 0xC0 + (255 - 128 * nOnce / 255) * 80) / 255);
}

TEST_F(VobSubTest, TracksAreNumberedAsInTheIndex)
{
    const std::string strIndex = TwoLanguages();
    ExpectList(strIndex, Columns + "    2  dvd_subtitle  en        -         1  0:00:00.400  0:00:03.400\n"
                                   "    5  dvd_subtitle  de        Gr\xc3\xbc\xc3\x9f"
                                   "e     2  0:00:00.500  0:00:04.500\n");
    ExpectBounds(Changed(Piped(strIndex, 2)[20]), 20, 120, 80, 20, "track 2");
    ExpectBounds(Changed(Piped(strIndex, 5)[20]), 240, 20, 80, 20, "track 5");
    ExpectBounds(Changed(Piped(strIndex, 5)[40]), 240, 60, 80, 20, "track 5");
    ExpectFailure(strIndex, strIndex + ": there is no subtitle track 0, there are 2 and 5");
    ExpectFailure(strIndex, strIndex + ": there is no subtitle track 1, there are 2 and 5", {"--track", "1"});
}

TEST_F(VobSubTest, PicturesOfOtherTracksBetweenAreLeftOut)
{
    const std::string strIndex = TracksInTurn();
    for (const size_t nFrame : {15U, 40U}) {
        ExpectBounds(Changed(Piped(strIndex, 0)[nFrame]), 20, 120, 80, 20, "track 0");
        ExpectBounds(Changed(Piped(strIndex, 1)[nFrame]), 240, 20, 80, 20, "track 1");
    }
    ExpectBounds(Changed(Piped(strIndex, 0, {"--raw"})[15]), 240, 20, 80, 20, "as it is");
    m_strSubtitles = strIndex;
    EXPECT_EQ(Subburn({"--snapshot", "0.5", GreyClip(), File("a.png")}).strOut,
              strIndex + ": pictures of other tracks between those of track 0 are left out\n" + File("a.png") +
                  ": the picture at 0:00:00.480, with a subtitle\n");
}

TEST_F(VobSubTest, LanguagesWithoutAWholeNumberArePassedOver)
{
    const std::string strIndex = TracksInTurn("id: fr, index: 0x\ntimestamp: 00:00:00:800, filepos: 000000000\n"
                                              "id: it, index: 1 2\ntimestamp: 00:00:00:800, filepos: 000000000\n");
    ExpectList(strIndex, Columns + "    0  dvd_subtitle  en        -         2  0:00:00.400  0:00:04.200\n"
                                   "    1  dvd_subtitle  de        -         2  0:00:00.400  0:00:04.200\n");
    ExpectBounds(Changed(Piped(strIndex, 0)[15]), 20, 120, 80, 20, "track 0");
    ExpectBounds(Changed(Piped(strIndex, 1)[15]), 240, 20, 80, 20, "track 1");
}

TEST_F(VobSubTest, ListLeavesOutWhatCannotBeSelected)
{
    const PictureUnit unit = PictureUnit::Filled(0, 0, 8, 8);
    const std::string strIndex = Pair("a", {{3, "--", {{1000, unit}}},
                                            {3, "fr", {{2000, unit}, {3000, unit}}},
                                            {-1, "it", {{2000, unit}}},
                                            {0, "und", {}}});
    ExpectList(strIndex, Columns + "    3  dvd_subtitle  -         -         1  0:00:01.000  0:00:04.000\n"
                                   "    0  dvd_subtitle  -         -         0            -            -\n");
    const std::string strEmpty = m_folder.Write("empty.idx", "id: en\nid: en, index: x\ntimestamp: 00:00:01:000\n");
    ExpectList(strEmpty, strEmpty + ": there are no subtitles in it\n");
}

TEST_F(VobSubTest, AnIndexMayBeUtf16)
{
    const std::string strIndex = UsualPair("a");
    std::ifstream stream(strIndex, std::ios::binary);
    std::string strWide = "\xff\xfe";
    for (char c = 0; stream.get(c);)
        strWide += {c, '\0'};
    const std::string strWideIndex = m_folder.Write("wide.idx", strWide);
    std::filesystem::copy_file(File("a.sub"), File("wide.sub"));
    ExpectList(strWideIndex, Columns + "    0  dvd_subtitle  en        -         2  0:00:00.400  0:00:04.200\n");
    EXPECT_TRUE(Piped(strWideIndex) == Piped(strIndex));
    ExpectFailure(strWideIndex, strWideIndex + ": there is no subtitle track 1, there is only 0", {"--track", "1"});
}

TEST_F(VobSubTest, WhatIsMissingIsNamed)
{
    const std::string strNone = File("none.idx");
    ExpectFailure(strNone, strNone + ": No such file or directory");
    const std::string strIndex = UsualPair("a");
    std::filesystem::remove(File("a.sub"));
    ExpectFailure(strIndex, File("a.sub") + ": No such file or directory (it holds the pictures of " + strIndex + ")");
    ExpectList(strIndex, Columns + "    0  dvd_subtitle  en        -         2  0:00:00.400  0:00:04.200\n");
    const std::string strSizeless = UsualPair("b", "");
    ExpectFailure(strSizeless, strSizeless + ": it has no line with the size of the video that it is made for, such as "
                                             "\"size: 720x576\"");
    for (const char *pSize : {"0x0", "720", "4097x10", "720,576"}) {
        const std::string strSized = UsualPair("c", std::string("size: ") + pSize + "\n");
        ExpectFailure(strSized, strSized + ": its size, \"" + pSize + "\", is not between 1x1 and 4096x4096");
    }
    const std::string strEmpty = Pair("d", {});
    ExpectFailure(strEmpty, strEmpty + ": there are no subtitles in it");
    std::filesystem::create_directory(File("folder.idx"));
    ExpectFailure(File("folder.idx"), File("folder.idx") + ": Is a directory");
}

TEST_F(VobSubTest, TheIndexMayBeInCapitalsButNotItsPictures)
{
    const std::string strIndex = UsualPair("a");
    std::filesystem::rename(strIndex, File("b.IDX"));
    std::filesystem::rename(File("a.sub"), File("b.sub"));
    ExpectBounds(Changed(Piped(File("b.IDX"))[20]), 100, 120, 80, 20, "");
    std::filesystem::rename(File("b.sub"), File("b.SUB"));
    ExpectFailure(File("b.IDX"),
                  File("b.sub") + ": No such file or directory (it holds the pictures of " + File("b.IDX") + ")");
}

TEST_F(VobSubTest, PairsNeedNoUtf8)
{
    const std::vector<std::string> listExpected = Piped(UsualPair("a"));
    std::filesystem::create_directory(File("\xff"));
    std::filesystem::rename(File("a.idx"), File("\xff/gr\xfc\xdf.Idx"));
    std::filesystem::rename(File("a.sub"), File("\xff/gr\xfc\xdf.sub"));
    EXPECT_TRUE(Piped(File("\xff/gr\xfc\xdf.Idx")) == listExpected);
    ExpectFailure(File("\xff/gr\xfc\xdf.Idx"),
                  File("\\xff/gr\\xfc\\xdf.Idx") + ": there is no subtitle track 1, there is only 0", {"--track", "1"});
    std::filesystem::remove(File("\xff/gr\xfc\xdf.sub"));
    ExpectFailure(File("\xff/gr\xfc\xdf.Idx"), File("\\xff/gr\\xfc\\xdf.sub") +
                                                   ": No such file or directory (it holds the pictures of " +
                                                   File("\\xff/gr\\xfc\\xdf.Idx") + ")");
}

TEST_F(VobSubTest, TimesBeforeTheBeginningAreListed)
{
    const std::string strIndex = m_folder.Write("a.idx", "size: 320x180\nid: en, index: 0\n"
                                                         "timestamp: -1:02:03:-50, filepos: 000000000\n"
                                                         "timestamp: 00:00:00:-40, filepos: 000000000\n");
    ExpectList(strIndex, "track  codec         language  title  cues         first         last\n"
                         "    0  dvd_subtitle  en        -         2  -0:57:57.050  0:00:02.960\n");
}

TEST_F(VobSubTest, TracksOfContainersAreToBeExtractedForTheExactLook)
{
    const std::string strIndex = UsualPair("a");
    const std::string strPictures = File("a.sub");
    ExpectFailure(strPictures, strPictures + ": subtitle track 0 is dvd_subtitle, which cannot be burnt from here, "
                                             "only from the .idx file of a VobSub pair");
    const std::string strFilm = Clip("it's a film.mkv", {"-f", "lavfi", "-i", "testsrc2=s=64x64:r=25:d=2", "-i",
                                                         strIndex, "-map", "0", "-map", "1", "-c:s", "copy"});
    const std::string strCommand = "mkvextract '" + File("it'\\''s a film.mkv") + "' tracks 1:track.idx";
    ExpectFailure(strFilm,
                  strFilm +
                      ": subtitle track 0 is dvd_subtitle, which --exact cannot burn from here; burn the "
                      ".idx file that this makes: " +
                      strCommand,
                  {"--exact"});
    ASSERT_EQ(ChildProcess::Run({"sh", "-c", "cd '" + m_folder.Path().string() + "' && " + strCommand}).nExit, 0);
    EXPECT_TRUE(Piped(File("track.idx"), -1, {"--exact"}) == Piped(strIndex, -1, {"--exact"}));
    // The natural look needs no extraction. It shows the second picture at its time; that of the pair a frame later.
    auto listTrack = Piped(strFilm);
    const auto listPair = Piped(strIndex);
    EXPECT_TRUE(listTrack[30] == listPair[31]);
    listTrack[30] = listPair[30];
    EXPECT_TRUE(listTrack == listPair);
}
