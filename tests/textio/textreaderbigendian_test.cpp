#include "support/temporaryfolder.h"
#include "textio/textreader.h"

#include <gtest/gtest.h>

using namespace std::string_literals;

// In a program of its own: the first UTF-16 file of a process decides the byte order of all.
TEST(TextReaderBigEndian, FirstUtf16FileDecidesTheByteOrderForGood)
{
    const TemporaryFolder folder;
    TextReader first;
    first.Open(QString::fromStdString(folder.Write("be", "\xFE\xFF\0a\0\n\0b"s)));
    ASSERT_EQ(first.GetLineCount(), 2);
    EXPECT_EQ(first.GetLine(0), QStringLiteral("a"));
    EXPECT_EQ(first.GetLine(1), QStringLiteral("b"));

    TextReader second;
    second.Open(QString::fromStdString(folder.Write("le", "\xFF\xFE\x61\0\n\0"s)));
    ASSERT_EQ(second.GetLineCount(), 1);
    EXPECT_EQ(second.GetLine(0), QString::fromUtf16(u"\x6100\x0A00"));
}
