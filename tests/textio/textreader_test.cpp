#include "support/temporaryfolder.h"
#include "textio/localecodec.h"
#include "textio/textreader.h"

#include <clocale>
#include <gtest/gtest.h>
#include <sys/stat.h>

using namespace std::string_literals;

namespace
{

std::vector<QString> Lines(const TextReader &reader)
{
    std::vector<QString> lines;
    for (int i = 0; i < reader.GetLineCount(); ++i)
        lines.push_back(reader.GetLine(i));
    return lines;
}

/** The lines of a file with these bytes. */
std::vector<QString> ReadLines(const std::string &bytes)
{
    const TemporaryFolder folder;
    TextReader reader;
    reader.Open(QString::fromStdString(folder.Write("file", bytes)));
    return Lines(reader);
}

std::vector<QString> Strings(std::initializer_list<const char16_t *> texts)
{
    std::vector<QString> strings;
    for (const char16_t *text : texts)
        strings.push_back(QString::fromUtf16(text));
    return strings;
}

std::string Utf16(const std::u16string &text, bool littleEndian, bool mark = true)
{
    std::string bytes;
    for (const char16_t unit : (mark ? u"\xFEFF" + text : text)) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += littleEndian ? std::string{low, high} : std::string{high, low};
    }
    return bytes;
}

int Detect(const std::string &bytes, qint64 *position = nullptr)
{
    const TemporaryFolder folder;
    QFile file(QString::fromStdString(folder.Write("file", bytes)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const int encode = TextReader::DetectEncode(file);
    if (position)
        *position = file.pos();
    return encode;
}

const char Utf8Mark[] = "\xEF\xBB\xBF";

} // namespace

TEST(TextReader, SplitsAtLineFeedsAndDropsCarriageReturns)
{
    EXPECT_EQ(ReadLines("1\nx\r\ny"), Strings({u"1", u"x", u"y"}));
    EXPECT_EQ(ReadLines("a\rb\r\nc"), Strings({u"ab", u"c"}));
}

TEST(TextReader, KeepsBlankLinesButNotWhatFollowsTheLastLineFeed)
{
    EXPECT_EQ(ReadLines("a\n\n"), Strings({u"a", u""}));
    EXPECT_EQ(ReadLines("a\r\n\r\nb\r\n"), Strings({u"a", u"", u"b"}));
    EXPECT_EQ(ReadLines("\n"), Strings({u""}));
}

TEST(TextReader, DeliversALastLineWithoutLineFeed)
{
    EXPECT_EQ(ReadLines("a\nb"), Strings({u"a", u"b"}));
    EXPECT_EQ(ReadLines("a\n\r"), Strings({u"a"}));
}

TEST(TextReader, FileOfCarriageReturnsIsOneLine)
{
    EXPECT_EQ(ReadLines("one\rtwo\rthree\r"), Strings({u"onetwothree"}));
}

TEST(TextReader, HasNoLinesOfAnEmptyMissingOrUnreadableFile)
{
    EXPECT_TRUE(ReadLines("").empty());
    const TemporaryFolder folder;
    TextReader reader;
    reader.Open(QString::fromStdString((folder.Path() / "missing").string()));
    EXPECT_EQ(reader.GetLineCount(), 0);
    reader.Open(QString::fromStdString(folder.Path().string()));
    EXPECT_EQ(reader.GetLineCount(), 0);
}

TEST(TextReader, SecondOpenAppends)
{
    const TemporaryFolder folder;
    TextReader reader;
    reader.Open(QString::fromStdString(folder.Write("a", "1\n2\n")));
    reader.Open(QString::fromStdString(folder.Write("b", "3")));
    EXPECT_EQ(Lines(reader), Strings({u"1", u"2", u"3"}));
}

TEST(TextReader, DecodesUtf8AfterItsMark)
{
    EXPECT_EQ(ReadLines(Utf8Mark + "a\n"s), Strings({u"a"}));
    EXPECT_EQ(ReadLines(Utf8Mark + "\xC3\xA4\xE2\x82\xAC\n\xF0\x9F\x98\x80"s), Strings({u"ä€", u"😀"}));
}

TEST(TextReader, InvalidUtf8GivesReplacementCharacters)
{
    const auto lines = ReadLines(Utf8Mark + "a\xFFz\nb"s);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], QString::fromUtf16(u"a\xFFFDz"));
    EXPECT_EQ(lines[1], QStringLiteral("b"));
}

TEST(TextReader, KeepsNulBytes)
{
    const auto lines = ReadLines("a\0b\nc"s);
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0], QString::fromUtf16(u"a\0b", 3));
}

TEST(TextReader, UnmarkedFileIsReadInTheLocalesEncoding)
{
    LocaleCodec::Use("windows-1251");
    EXPECT_EQ(ReadLines("\xC4\xE0\n"), Strings({u"Да"}));
    LocaleCodec::Use("UTF-8");
    EXPECT_EQ(ReadLines("\xD0\x94\n"), Strings({u"Д"}));
    LocaleCodec::UseEnvironment();
}

TEST(TextReader, DetectsMarksAndSkipsThem)
{
    qint64 position = -1;
    EXPECT_EQ(Detect("\xFF\xFE\x61\x00"s, &position), EncodeU16Le);
    EXPECT_EQ(position, 2);
    EXPECT_EQ(Detect("\xFE\xFF\x00\x61"s, &position), EncodeU16Be);
    EXPECT_EQ(position, 2);
    EXPECT_EQ(Detect(Utf8Mark + "a"s, &position), EncodeUtf8);
    EXPECT_EQ(position, 3);
    EXPECT_EQ(Detect("abcd", &position), EncodeLocal);
    EXPECT_EQ(position, 0);
}

TEST(TextReader, Utf32MarkCountsAsUtf16)
{
    EXPECT_EQ(Detect("\xFF\xFE\x00\x00"s), EncodeU16Le);
}

TEST(TextReader, FileShorterThanAMarkHasNone)
{
    EXPECT_EQ(Detect(""), EncodeLocal);
    EXPECT_EQ(Detect("\xFF"), EncodeLocal);
    EXPECT_EQ(Detect("\xEF\xBB"), EncodeLocal);
    EXPECT_EQ(Detect("\xFF\xFE"), EncodeU16Le);
    EXPECT_EQ(ReadLines("a"), Strings({u"a"}));
    EXPECT_TRUE(ReadLines("\xFF\xFE").empty());
}

// The byte order is decided once per process, so every test here that reads UTF-16 reads little-endian first.
TEST(TextReader, Utf16ReadsLikeItsUtf8Twin)
{
    const std::pair<std::u16string, std::string> twins[] = {
        {u"a\nb", "a\nb"}, {u"a\n\n", "a\n\n"}, {u"a\r\n\r\nä€😀\r\n", "a\r\n\r\nä€😀\r\n"},
        {u"", ""},         {u"a\n\r", "a\n\r"}, {u"\r", "\r"},
    };
    for (const auto &[wide, narrow] : twins)
        EXPECT_EQ(ReadLines(Utf16(wide, true)), ReadLines(Utf8Mark + narrow)) << narrow;
}

TEST(TextReader, OddLastByteOfUtf16IsDropped)
{
    EXPECT_EQ(ReadLines(Utf16(u"a\n", true) + "x"), Strings({u"a"}));
    EXPECT_EQ(ReadLines(Utf16(u"a", true) + "x"), Strings({u"a"}));
}

TEST(TextReader, LaterUtf16FileOfOtherByteOrderIsReadLikeTheFirst)
{
    EXPECT_EQ(ReadLines(Utf16(u"a\n", true)), Strings({u"a"}));
    // U+0A00 does not end a line, U+6100 is no 'a'.
    EXPECT_EQ(ReadLines(Utf16(u"a\nb", false)), Strings({u"\x6100\x0A00\x6200"}));
}

TEST(TextReader, ReadLineWNeverReportsTheEnd)
{
    const TemporaryFolder folder;
    QFile file(QString::fromStdString(folder.Write("file", Utf16(u"a\nb", true, false))));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString line;
    EXPECT_TRUE(ReadLineW(file, line, true));
    EXPECT_EQ(line, QStringLiteral("a"));
    EXPECT_TRUE(ReadLineU16Le(file, line));
    EXPECT_EQ(line, QStringLiteral("b"));
    for (int i = 0; i < 3; ++i) {
        line = QStringLiteral("before");
        EXPECT_TRUE(ReadLineU16Be(file, line));
        EXPECT_EQ(line, QString());
    }
}

TEST(TextReader, ByteReadersLeaveTheLineAloneAtTheEnd)
{
    const TemporaryFolder folder;
    QFile file(QString::fromStdString(folder.Write("file", "a\nb")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QString line;
    EXPECT_TRUE(ReadLineU8(file, line));
    EXPECT_EQ(line, QStringLiteral("a"));
    EXPECT_TRUE(ReadLineLocal(file, line));
    EXPECT_EQ(line, QStringLiteral("b"));
    EXPECT_FALSE(ReadLineU8(file, line));
    EXPECT_FALSE(ReadLineLocal(file, line));
    EXPECT_EQ(line, QStringLiteral("b"));
    QByteArray bytes("before");
    EXPECT_FALSE(ReadLineA(file, bytes));
    EXPECT_TRUE(bytes.isEmpty());
}

TEST(TextReader, FileBeyondTheLimitHasNoLines)
{
    const TemporaryFolder folder;
    const std::string path = folder.Write("file", "a\nb\n");
    const auto linesAtSize = [&](qint64 size) {
        std::filesystem::resize_file(path, static_cast<std::uintmax_t>(size)); // a hole, which takes no room
        TextReader reader;
        reader.Open(QString::fromStdString(path));
        return reader.GetLineCount();
    };
    EXPECT_EQ(linesAtSize(TextReader::MaxFileSize), 3);
    EXPECT_EQ(linesAtSize(TextReader::MaxFileSize + 1), 0);
    EXPECT_EQ(linesAtSize(5LL << 30), 0);
}

TEST(TextReader, LinesBeyondTheLimitAreNotRead)
{
    const TemporaryFolder folder;
    for (const std::string &mark : {""s, "\xFF\xFE"s}) {
        std::string bytes = mark + "a" + std::string(mark.empty() ? 0 : 1, '\0');
        const std::string end = "\n" + std::string(mark.empty() ? 0 : 1, '\0');
        for (std::size_t i = 0; i < TextReader::MaxLines + 2; ++i)
            bytes += end;
        TextReader reader;
        reader.Open(QString::fromStdString(folder.Write("file", bytes)));
        EXPECT_EQ(reader.GetLineCount(), static_cast<int>(TextReader::MaxLines));
        EXPECT_EQ(reader.GetLine(0), QStringLiteral("a"));
        EXPECT_EQ(reader.GetLine(reader.GetLineCount() - 1), QString());
    }
}

TEST(TextReader, WhatIsNoRegularFileHasNoLinesAndIsNotWaitedFor)
{
    const TemporaryFolder folder;
    const std::string pipe = (folder.Path() / "pipe").string();
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string &path : {pipe, folder.Path().string(), "/dev/zero"s}) {
        TextReader reader;
        reader.Open(QString::fromStdString(path));
        EXPECT_EQ(reader.GetLineCount(), 0) << path;
    }
}
