// A Matroska file in which FFmpeg's search for streams may reach its limit before the last subtitle.
#include "parsers/ffparser.h"
#include "support/temporaryfolder.h"

#include <gtest/gtest.h>

#include <string>

namespace
{

std::string BigEndian(unsigned long long nValue, int nBytes)
{
    std::string strBytes;
    while (nBytes-- > 0)
        strBytes += static_cast<char>(nValue >> (8 * nBytes) & 0xFF);
    return strBytes;
}

/** A Matroska element with its size in 8 bytes. */
std::string Element(const std::string &strId, const std::string &strContent)
{
    return strId + BigEndian(1ULL << 56 | strContent.size(), 8) + strContent;
}

std::string Number(const std::string &strId, unsigned nValue)
{
    return Element(strId, BigEndian(nValue, 4));
}

std::string Track(unsigned nNumber, const std::string &strCodec)
{
    return Element("\xAE", Number("\xD7", nNumber) + Number("\x73\xC5", nNumber) + Number("\x83", 17) +
                               Element("\x86", strCodec));
}

std::string Cluster(unsigned nTime, const std::string &strContent)
{
    return Element("\x1F\x43\xB6\x75", Number("\xE7", nTime) + strContent);
}

std::string Cue(unsigned nTime, const std::string &strText)
{
    return Element("\xA0", Element("\xA1", "\x81" + BigEndian(nTime, 2) + std::string(1, '\0') + strText) +
                               Number("\x9B", 1000));
}

/** Two cues, and between them blocks of no track. A second track has no packets, so FFmpeg searches on for it. */
std::string Film(int nMegabytes)
{
    const std::string strHead =
        Element("\x1A\x45\xDF\xA3", Element("\x42\x82", "matroska") + Number("\x42\x87", 4) + Number("\x42\x85", 2));
    std::string strFilm = Element("\x15\x49\xA9\x66", Number("\x2A\xD7\xB1", 1000000));
    strFilm += Element("\x16\x54\xAE\x6B", Track(1, "S_TEXT/UTF8") + Track(2, "S_HDMV/PGS"));
    strFilm += Cluster(0, Cue(1000, "first"));
    const std::string strStray = Element("\xA3", std::string("\x89\0\0\x80", 4) + std::string(20000, '\0'));
    std::string strMegabyte;
    for (int n = 0; n < 50; ++n)
        strMegabyte += strStray;
    for (int n = 0; n < nMegabytes; ++n)
        strFilm += Cluster(2000 + n, strMegabyte);
    strFilm += Cluster(30000, Cue(0, "late"));
    return strHead + Element("\x18\x53\x80\x67", strFilm);
}

} // namespace

TEST(LongSearch, ForStreamsLosesNoSubtitles)
{
    const TemporaryFolder folder;
    for (const int nMegabytes : {10, 40}) {
        const std::string strFile = folder.Write("film.mkv", Film(nMegabytes));
        FFParser parser;
        EXPECT_NE(parser.Open(QString::fromStdString(strFile), 0), 0);
        EXPECT_EQ(parser.GetSubtitle(1500), QStringLiteral("first")) << nMegabytes;
        EXPECT_EQ(parser.GetSubtitle(30500), QStringLiteral("late")) << nMegabytes;
        EXPECT_EQ(parser.GetSubtitle(29000), QString()) << nMegabytes;
        FFParser second;
        EXPECT_NE(second.Open(QString::fromStdString(strFile), 1), 0);
        EXPECT_EQ(second.GetSubtitle(1500), QString()) << nMegabytes;
    }
}
