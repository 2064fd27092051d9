// Files from public repositories (data/SOURCES.md): which text is due at which time.
#include "parsers/parsermanager.h"
#include "support/temporaryfolder.h"
#include "textio/localecodec.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/log.h>
}

namespace
{

struct Due {
    long nTime;
    const char *pText; ///< "" if none is due
};

struct Sample {
    const char *pFile;
    const char *pEncoding; ///< of the locale; null if it does not matter
    std::vector<Due> listDue;
};

void PrintTo(const Sample &sample, std::ostream *out)
{
    *out << sample.pFile;
}

const Sample Samples[] = {
    {"typical.srt",
     nullptr,
     {{1, "This is the first subtitle."},
      {1234, "This is the first subtitle."},
      {1235, ""},
      {2345, "This is the second subtitle.\nSecond subtitle with second line."},
      {3456, "This is the second subtitle.\nSecond subtitle with second line."},
      {7204568, "This is the third subtitle."},
      {7208902, ""}}},
    // Any number of decimals is a fraction of a second.
    {"typical_bad_timestamps.srt",
     nullptr,
     {{2345, "This should be discarded (too many decimal places)."},
      {3456, "This should be discarded (too many decimal places)."},
      {7208900, "This should be discarded (too few decimal places)."},
      {7208901, ""}}},
    {"typical_extra_blank_line.srt",
     nullptr,
     {{1, "This is the first subtitle."}, {7204568, "This is the third subtitle."}}},
    {"typical_missing_sequence.srt",
     nullptr,
     {{1, "This is the first subtitle."},
      {2346, "This is the second subtitle.\nSecond subtitle with second line."},
      {7204568, "This is the third subtitle."}}},
    {"typical_with_tags.srt",
     nullptr,
     {{1, "This is {\\an1} the first subtitle."}, {24567, "This {\\an9} is a line."}}},
    {"utf8.srt",
     "UTF-8",
     {{500, "[UTF-8] 0.5: 고양이. Чч Щщ Ъъ. Óó Śś Źź. Ýý Ţţ Ł €. 猫."},
      {5001, "[UTF-8] 5.0: 고양이. Чч Щщ Ъъ. Óó Śś Źź. Ýý Ţţ Ł €. 猫."}}},
    {"windows-1252.srt", "windows-1252", {{501, "[Western Europe] 0.5: Àà Áá Ââ Ææ Çç Èè Ïï Ðð Ññ Õõ Øø Ýý Þþ £ €"}}},
    {"windows-1254.srt", "windows-1254", {{501, "[Turkish] 0.5: Çç Ğğ Öö Üü Şş ¡ ¿ § µ ¾"}}},
    {"windows-1250.srt", "windows-1250", {{501, "[Central Europe] 0.5: Ąą Ćć Ęę Łł Ńń Óó Śś Źź Żż"}}},
    {"windows-1256.srt", "windows-1256", {{501, "[Arabic] 0.5: علاء ديه القط، والقط هو علاء"}}},
    {"windows-874.srt", "windows-874", {{501, "[Thai] 0.5: กข ฃค ฅฆ งจ ฉช ซฌ ฑฒ ดต าโ ใไ ๅๆ ๏ ๚ ๛"}}},
    {"big5.srt", "Big5", {{501, "[Chinese Traditional] 0.5: 她有一隻貓。貓有皮毛"}}},
    {"utf16.srt", nullptr, {{1, "ترجمه و تنظيم زيرنويس"}}},
    {"example-in-styled.srt",
     nullptr,
     {{17985, "<font color=\"#00ff00\"><b>[instrumental music]</b></font>"}, {720000, "<i>x</i>^3 * <i>x</i> = 100"}}},
    // Only carriage returns separate the lines, so the reader sees one line.
    {"example-in-carriage-return.srt", nullptr, {{99500, ""}, {125000, ""}}},
    {"example-in-carriage-return.ssa", nullptr, {{99500, ""}, {125000, ""}}},
    {"example-in-html-entities.srt",
     nullptr,
     {{1000, "The man in black fled across the desert, &nbsp;\n&amp; the gunslinger followed."},
      {4102, "Go,&nbsp;then,"},
      {9674, "there are other &lt; worlds than these."}}},
    {"missing-sequence-in.srt",
     nullptr,
     {{99000, "(deep rumbling)"}, {151400, "(computer playing\nelectronic melody)"}}},
    {"alignment.srt", nullptr, {{1, "{\\an1}V: Bottom - H: Left"}, {16500, "{\\an9}V: Top - H: Right"}}},
    {"extended-tags.srt", nullptr, {{136611, ""}, {136612, "Hello <bold>my</bold> name is Bob"}, {139380, ""}}},
    {"example-in.ssa",
     nullptr,
     {{98999, ""},
      {99000, "(deep rumbling)"},
      {101040, "(deep rumbling)"},
      {101041, ""},
      {124080, "MAN:\\nHow did we end up here?"},
      {150000, "We don't belong\nin this shithole."},
      {151400, "(computer playing\\nelectronic melody)"}}},
    // Events with fewer fields than the fixed layouts: the last is read repeatedly, or the text is cut at a comma.
    {"overlapping_timecodes.ssa", nullptr, {{2500, ""}, {9000, ""}}},
    {"positioning.ass", nullptr, {{1000, "50.5)}First subtitle."}, {1231, ""}, {3000, "50.5)}."}}},
    {"typical_utf16le.ass",
     nullptr,
     {{1000, "This is the first subtitle."},
      {3000, "This is the second subtitle \\nwith a newline \nand another."},
      {5000, ""}}},
    {"with_overlapping_timestamps.vtt",
     nullptr,
     {{1, "Displayed at the bottom for 3 seconds."}, {2500, "Displayed at the bottom for 3 seconds."}}},
    {"with_tags.vtt",
     nullptr,
     {{1000, "This is the <i>first</i> subtitle."},
      {2345, "This is the <b><i>second</b></i> subtitle."},
      {6000, "This is the &lt;fourth&gt; &amp;subtitle."}}},
    {"ass_different_format2.ass", nullptr, {{137400, "Senator, we're making\nour final approach into Coruscant."}}},
    {"sub_viewer.sub", nullptr, {{137400, "Senator, we're making[br]our final approach into Coruscant."}}},
    {"example-in-carriage-return.vtt",
     nullptr,
     {{3767, "That's true. You don’t often find 632\rpieces of gum stuck on a sidewalk"},
      {12000, "at a busy bus stop or anywhere\relse for that matter."}}},
    {"timings-negative.vtt", nullptr, {{999, ""}, {1000, "text1"}, {60001, "text2"}}},
    {"newlines.vtt", nullptr, {{1, "text1"}}},
    {"captions.ar.vtt", nullptr, {{15042, "...إلى... إلى الشمال يمكن أن نرى\n...يمكن أن نرى الـ"}, {537350, "...إنه"}}},
    {"captions.ja.vtt",
     nullptr,
     {{15041, ""}, {15042, "左に見えるのは…"}, {18042, "左に見えるのは…"}, {537350, "…あるって"}}},
    {"captions.ru.vtt",
     nullptr,
     {{14958, "Слева мы видим..."}, {17833, "Слева мы видим..."}, {537350, "...она есть... есть..."}}},
    {"sample_MKV_SRT.mkv", nullptr, {{999, ""}, {1000, "Line 1"}, {3000, "Line 1"}, {3024, "Line 2"}}},
};

class SampleTest : public testing::TestWithParam<Sample>
{
protected:
    SampleTest() : m_workingFolder(std::filesystem::current_path())
    {
        av_log_set_level(AV_LOG_QUIET);
        // Files are opened by relative names: a locale's encoding may lack letters of the folder's name.
        std::filesystem::current_path(TEST_DATA);
    }
    ~SampleTest() override
    {
        std::filesystem::current_path(m_workingFolder);
        av_log_set_level(AV_LOG_INFO);
        LocaleCodec::UseEnvironment();
    }

private:
    std::filesystem::path m_workingFolder;
};

} // namespace

TEST_P(SampleTest, ShowsWhatItHolds)
{
    const Sample &sample = GetParam();
    if (sample.pEncoding)
        LocaleCodec::Use(sample.pEncoding);
    ParserManager manager;
    ASSERT_NE(manager.Open(QString::fromLatin1(sample.pFile), 0), 0);
    for (const Due &due : sample.listDue)
        EXPECT_EQ(manager.GetSubtitle(due.nTime).toStdString(), due.pText) << "at " << due.nTime;
}

INSTANTIATE_TEST_SUITE_P(Files, SampleTest, testing::ValuesIn(Samples));

// Text in the encodings of several locales, in SubRip files and scripts.
TEST(Samples, EightBitAndMultiByteEncodings)
{
    const struct {
        const char *pEncoding;
        const char16_t *pText;
        const char *pBytes;
    } texts[] = {
        {"windows-1251", u"Случайность - это непознанная",
         "\xD1\xEB\xF3\xF7\xE0\xE9\xED\xEE\xF1\xF2\xFC - \xFD\xF2\xEE \xED\xE5\xEF\xEE\xE7\xED\xE0\xED\xED\xE0\xFF"},
        {"KOI8-R", u"Случайность - это непознанная",
         "\xF3\xCC\xD5\xDE\xC1\xCA\xCE\xCF\xD3\xD4\xD8 - \xDC\xD4\xCF \xCE\xC5\xD0\xCF\xDA\xCE\xC1\xCE\xCE\xC1\xD1"},
        {"windows-1250", u"Trpaslík nebude větší", "Trpasl\xEDk nebude v\xECt\x9A\xED"},
        {"windows-1252", u"Es gibt zwei Arten guter Menschen: äöüß",
         "Es gibt zwei Arten guter Menschen: \xE4\xF6\xFC\xDF"},
        {"windows-1255", u"גיאנה", "\xE2\xE9\xE0\xF0\xE4"},
        {"Shift_JIS", u"ジャージー", "\x83W\x83\x83\x81[\x83W\x81["},
        {"EUC-KR", u"바레인", "\xB9\xD9\xB7\xB9\xC0\xCE"},
        {"GB18030", u"将军画善盖有神，", "\xBD\xAB\xBE\xFC\xBB\xAD\xC9\xC6\xB8\xC7\xD3\xD0\xC9\xF1\xA3\xAC"},
        {"BIG5", u"字幕", "\xA6r\xB9\xF5"},
        {"ISO-8859-15", u"naïve €", "na\xEFve \xA4"},
        {"UTF-8", u"Аруба 😀", "\xD0\x90\xD1\x80\xD1\x83\xD0\xB1\xD0\xB0 \xF0\x9F\x98\x80"},
    };
    const TemporaryFolder folder;
    for (const auto &[encoding, text, pBytes] : texts) {
        LocaleCodec::Use(encoding);
        const std::string bytes = pBytes;
        const std::string files[] = {
            folder.Write("a.srt", "1\r\n00:00:01,000 --> 00:00:02,000\r\n" + bytes + "\r\n"),
            folder.Write("a.ass",
                         "ScriptType: v4.00+\nDialogue: 0,0:00:01.00,0:00:02.00,Default,,0,0,0,," + bytes + "\n")};
        for (const std::string &file : files) {
            ParserManager manager;
            ASSERT_NE(manager.Open(QString::fromStdString(file), 0), 0);
            EXPECT_EQ(manager.GetSubtitle(1500), QString::fromUtf16(text)) << encoding << " " << file;
        }
    }
    LocaleCodec::UseEnvironment();
}

// Unconverted, the durations of the muxer's empty packets are thousands of seconds, so these hide most of the texts.
TEST(Samples, Mp4ShowsItsPayloadAndUnconvertedDurations)
{
    av_log_set_level(AV_LOG_QUIET);
    ParserManager manager;
    ASSERT_NE(manager.Open(QStringLiteral(TEST_DATA "/sample_MP4_stz2_compact.mp4"), 0), 0);
    EXPECT_EQ(manager.GetSubtitle(1).toStdString(), std::string(2, '\0'));
    EXPECT_EQ(manager.GetSubtitle(13001).toStdString().substr(2), "日本語のテスト");
    av_log_set_level(AV_LOG_INFO);
}
