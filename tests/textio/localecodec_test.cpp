#include "textio/localecodec.h"

#if QT_VERSION_MAJOR < 6
#include <QTextCodec>
#endif
#include <gtest/gtest.h>

using namespace std::string_literals;

namespace
{

std::u16string Decoded(const char *pName, const std::string &strBytes)
{
    return LocaleCodec(pName).Decode(strBytes.data(), static_cast<qsizetype>(strBytes.size())).toStdU16String();
}

std::string Encoded(const char *pName, const std::u16string &strText)
{
    return LocaleCodec(pName).Encode(QString::fromStdU16String(strText)).toStdString();
}

} // namespace

TEST(LocaleCodec, KnowsTheEncodingsOfAllLocales)
{
    const char *listNames[] = {"ARMSCII-8",  "BIG5",       "BIG5-HKSCS", "CP1251",      "CP1255",      "EUC-JP",
                               "EUC-KR",     "EUC-TW",     "GB18030",    "GB2312",      "GBK",         "GEORGIAN-PS",
                               "ISO-8859-1", "ISO-8859-2", "ISO-8859-3", "ISO-8859-5",  "ISO-8859-6",  "ISO-8859-7",
                               "ISO-8859-8", "ISO-8859-9", "KOI8-R",     "ISO-8859-10", "ISO-8859-13", "ISO-8859-14",
                               "KOI8-T",     "KOI8-U",     "PT154",      "ISO-8859-15", "RK1048",      "TIS-620"};
    for (const char *pName : listNames) {
        EXPECT_FALSE(LocaleCodec(pName).IsUtf8()) << pName;
        EXPECT_EQ(Decoded(pName, "a: 1\n"), u"a: 1\n") << pName;
        EXPECT_EQ(Encoded(pName, u"a: 1\n"), "a: 1\n") << pName;
    }
}

TEST(LocaleCodec, Utf8WhereTheLocaleNamesNoOther)
{
    for (const char *pName : {"UTF-8", "ANSI_X3.4-1968", "no such encoding", ""}) {
        EXPECT_TRUE(LocaleCodec(pName).IsUtf8()) << pName;
        EXPECT_EQ(Decoded(pName, "\xD0\x94\0\xFF"s), u"Д\0\xFFFD"s) << pName;
        EXPECT_EQ(Encoded(pName, u"Д\0"s), "\xD0\x94\0"s) << pName;
    }
}

TEST(LocaleCodec, CharactersOfSeveralBytes)
{
    EXPECT_EQ(Decoded("BIG5", "\xA6r\xB9\xF5\0a"s), u"字幕\0a"s);
    EXPECT_EQ(Encoded("BIG5", u"字幕\0a"s), "\xA6r\xB9\xF5\0a"s);
    EXPECT_EQ(Decoded("GB18030", "\x94\x39\xDA\x33"), u"💩");
    EXPECT_EQ(Encoded("GB18030", u"💩"), "\x94\x39\xDA\x33");
    // One character of the encoding is two of Unicode.
    EXPECT_EQ(Decoded("BIG5-HKSCS", "\x88\x62"), u"\u00CA\u0304");
}

TEST(LocaleCodec, AccentsAtTheEndOfALine)
{
    // The decoder holds a letter back until it knows whether an accent follows.
    EXPECT_EQ(Decoded("CP1255", "\xE0"), u"\u05D0");
    EXPECT_EQ(Decoded("CP1258", "a\xEC"), u"\u00E1");
    EXPECT_EQ(Decoded("CP1258", "a"), u"a");
}

TEST(LocaleCodec, InvalidBytesAreReplacedOneByOne)
{
    EXPECT_EQ(Decoded("CP1251", "\xC4\x98\xE0"), u"Д\xFFFDа");
    EXPECT_EQ(Decoded("BIG5", "\xFF\xA6r"), u"\xFFFD字");
    EXPECT_EQ(Decoded("BIG5", "a\xA6"), u"a\xFFFD");
    const LocaleCodec codec("BIG5");
    EXPECT_EQ(codec.Decode("\xA6", 1).toStdU16String(), u"\xFFFD");
    EXPECT_EQ(codec.Decode("r", 1).toStdU16String(), u"r");
}

TEST(LocaleCodec, CharactersThatTheEncodingLacksAreQuestionMarks)
{
    EXPECT_EQ(Encoded("ISO-8859-1", u"aДä"), "a?\xE4");
    EXPECT_EQ(Encoded("ISO-8859-1", u"a💩b"), "a?b");
    EXPECT_EQ(Encoded("ISO-8859-1", u"a\xD83D"), "a?");
}

TEST(LocaleCodec, TextsLongerThanItsBuffer)
{
    const std::string strBytes(100001, '\xC4');
    const std::u16string strText(100001, u'Д');
    EXPECT_EQ(Decoded("CP1251", strBytes), strText);
    EXPECT_EQ(Encoded("CP1251", strText), strBytes);
    EXPECT_EQ(Decoded("CP1251", ""), u"");
    EXPECT_EQ(Encoded("CP1251", u""), "");
}

TEST(LocaleCodec, TheCurrentOneIsTheOneChosen)
{
    LocaleCodec::Use("KOI8-R");
    EXPECT_EQ(LocaleCodec::Current()->Decode("\xC4", 1), QString(QChar(u'д')));
    EXPECT_EQ(LocaleCodec::Current(), LocaleCodec::Current());
    LocaleCodec::Use("CP1251");
    EXPECT_EQ(LocaleCodec::Current()->Decode("\xC4", 1), QString(QChar(u'Д')));
    LocaleCodec::UseQt();
    EXPECT_TRUE(LocaleCodec::Current()->IsUtf8());
    LocaleCodec::UseEnvironment();
    EXPECT_TRUE(LocaleCodec::Current()->IsUtf8());
}

#if QT_VERSION_MAJOR < 6
TEST(LocaleCodec, AHostMaySetAnotherWithQt)
{
    LocaleCodec::Use("KOI8-R");
    QTextCodec *const before = QTextCodec::codecForLocale();
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("windows-1251"));
    EXPECT_EQ(LocaleCodec::Current()->Decode("\xC4", 1), QString(QChar(u'Д')));
    QTextCodec::setCodecForLocale(before);
    EXPECT_EQ(LocaleCodec::Current()->Decode("\xC4", 1), QString(QChar(u'д')));
    LocaleCodec::UseQt();
}
#endif
