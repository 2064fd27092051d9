// The walk through a program stream's packets.
#include "support/pictureunit.h"
#include "support/plainstream.h"
#include "support/programstream.h"
#include "support/subtitledecodertest.h"
#include "support/temporaryfolder.h"
#include "vobsub/psstream.h"

#include <algorithm>
#include <random>

namespace
{

class PsStreamTest : public SubtitleDecoderTest
{
protected:
    PsStreamTest() { Init(8, 4); }

    /** Walks the bytes, in a buffer of exactly their size, and feeds the payloads to the plain decoder, too. */
    void Walk(const Bytes &bytes)
    {
        Bytes exact(bytes);
        exact.shrink_to_fit();
        DecodePSStream(exact.data(), static_cast<int>(exact.size()));
        EXPECT_EQ(exact, bytes);
        for (const auto &payload : PlainPayloads(bytes))
            m_plain.Decode(payload.data(), static_cast<int>(payload.size()));
        ExpectSame();
    }
    void Walk(const ProgramStream &stream) { Walk(stream.Get()); }

    /** The payload bytes that a walk hands to the decoder. */
    Bytes Payload(const ProgramStream &stream)
    {
        Start();
        Walk(stream);
        return Bytes(decoder.Rdbfr + 4, decoder.Rdbfr + std::max(decoder.Rdlgth, 4));
    }

    /** Begins a unit that is never complete, so that the decoder holds all following bytes. */
    void Start()
    {
        subtitle_drop_input();
        m_plain.DropInput();
        Feed({0xFF, 0xFF, 0, 4});
    }

    const Bytes m_one = {1, 2, 3};
    const Bytes m_two = {4, 5};
    const Bytes m_both = {1, 2, 3, 4, 5};
};

/** Changes the current folder while it lives. */
class CurrentFolder
{
public:
    explicit CurrentFolder(const std::filesystem::path &path) : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(path);
    }
    ~CurrentFolder()
    {
        std::error_code ignored;
        std::filesystem::current_path(m_before, ignored);
    }
    CurrentFolder(const CurrentFolder &) = delete;
    CurrentFolder &operator=(const CurrentFolder &) = delete;

private:
    std::filesystem::path m_before;
};

} // namespace

TEST_F(PsStreamTest, UnitAfterAPackHeaderIsDecoded)
{
    Walk(ProgramStream().PackHeader(3).Private(0x21, PictureUnit::Filled(1, 0, 5, 4).Encode()));
    EXPECT_EQ(Row(3), ".11111..");
    EXPECT_EQ(decoder.Rdlgth, 0);
    Init(8, 4);
    Walk(ProgramStream().PackHeader(3).Private(0x80, PictureUnit::Filled(1, 0, 5, 4).Encode()));
    EXPECT_TRUE(IsTransparent());
    EXPECT_EQ(decoder.Rdlgth, 0);
}

TEST_F(PsStreamTest, UnitSplitOverPacketsAndBuffers)
{
    const Bytes unit = PictureUnit::Filled(1, 0, 5, 4).Encode();
    for (std::size_t nAt = 1; nAt < unit.size(); ++nAt) {
        const Bytes first(unit.begin(), unit.begin() + nAt);
        const Bytes second(unit.begin() + nAt, unit.end());
        Init(8, 4);
        Walk(ProgramStream().PackHeader(0).Private(0x20, first).PackHeader(1).Private(0x20, second));
        EXPECT_EQ(Row(3), ".11111..");
        Init(8, 4);
        Walk(ProgramStream().PackHeader(0).Private(0x20, first));
        EXPECT_TRUE(IsTransparent());
        Walk(ProgramStream().PackHeader(0).Private(0x20, second));
        EXPECT_EQ(Row(3), ".11111..");
    }
}

TEST_F(PsStreamTest, StuffingOfPackHeadersIsSteppedOver)
{
    for (int nStuffing = 0; nStuffing <= 7; ++nStuffing)
        EXPECT_EQ(Payload(ProgramStream()
                              .PackHeader(nStuffing)
                              .Private(0x20, m_one)
                              .PackHeader(7 - nStuffing)
                              .PackHeader(nStuffing)
                              .Private(0x20, m_two)),
                  m_both);
}

TEST_F(PsStreamTest, PaddingIsSteppedOver)
{
    for (const std::size_t nLength : {0, 1, 2, 255, 256, 2000, 65535})
        EXPECT_EQ(Payload(ProgramStream().Private(0x20, m_one).Padding(nLength).Private(0x20, m_two)), m_both);
}

TEST_F(PsStreamTest, SubPictureStreamsAre0x20To0x3F)
{
    for (int nStream = 0; nStream < 256; ++nStream)
        EXPECT_EQ(Payload(ProgramStream().PackHeader(0).Private(nStream, m_one).Private(0x30, m_two)),
                  nStream >= 0x20 && nStream <= 0x3F ? m_both : m_two)
            << nStream;
}

TEST_F(PsStreamTest, HeaderLengthSaysWhereThePayloadIs)
{
    for (int nHeader = 0; nHeader < 256; ++nHeader)
        EXPECT_EQ(Payload(ProgramStream().Private(0x20, m_one, nHeader).Private(0x3F, m_two, 255 - nHeader)), m_both);
}

TEST_F(PsStreamTest, LongestPacket)
{
    Bytes payload(65535 - 5 - 4);
    for (std::size_t n = 0; n < payload.size(); ++n)
        payload[n] = static_cast<std::uint8_t>(n * 7 / 5);
    EXPECT_EQ(Payload(ProgramStream().Private(0x20, payload)), payload);
}

TEST_F(PsStreamTest, UnknownIdsEndTheWalk)
{
    for (int nId = 0; nId < 256; ++nId) {
        if (nId == 0xBA || nId == 0xBD || nId == 0xBE)
            continue;
        const Bytes length = {0, 2, 0xFF, 0xFF};
        EXPECT_EQ(Payload(ProgramStream().Private(0x20, m_one).Start(nId).Raw(length).Private(0x20, m_two)), m_one)
            << nId;
        EXPECT_EQ(Payload(ProgramStream().Start(nId).Raw(length).Private(0x20, m_two)), Bytes()) << nId;
    }
}

TEST_F(PsStreamTest, AnythingButAPacketEndsTheWalk)
{
    for (const Bytes &other : {Bytes{1, 0, 1, 0xBD}, Bytes{0, 1, 1, 0xBD}, Bytes{0, 0, 2, 0xBD},
                               Bytes{0, 0, 0, 1, 0xBD}, Bytes{0xFF}, Bytes{0}}) {
        EXPECT_EQ(Payload(ProgramStream().Private(0x20, m_one).Raw(other).Private(0x20, m_two)), m_one);
        EXPECT_EQ(Payload(ProgramStream().Raw(other).Private(0x20, m_two)), Bytes());
    }
}

TEST_F(PsStreamTest, ShortBuffersDoNothing)
{
    Start();
    unsigned char listBytes[] = {0, 0, 1, 0xBD, 0, 20, 0, 0, 0, 0x20, 1, 2, 3};
    for (const int nLength : {4, 3, 2, 1, 0, -1, -1000})
        DecodePSStream(listBytes, nLength);
    DecodePSStream(nullptr, 0);
    EXPECT_EQ(decoder.Rdlgth, 4);
    for (int nId = 0; nId < 256; ++nId) {
        const Bytes start = {0, 0, 1, static_cast<std::uint8_t>(nId)};
        Walk(start);
        for (const std::uint8_t nNext : {0, 0xFF}) {
            Bytes more = start;
            for (int n = 0; n < 12; ++n) {
                more.push_back(nNext);
                Walk(more);
            }
        }
    }
    EXPECT_EQ(decoder.Rdlgth, 4);
}

TEST_F(PsStreamTest, PacketsAreCutAtTheBuffersEnd)
{
    const Bytes stream = ProgramStream()
                             .PackHeader(5)
                             .Private(0x25, m_one)
                             .Padding(9)
                             .Private(0x25, m_two, 0)
                             .PackHeader(0)
                             .Private(0x80, m_one)
                             .Private(0x25, {6, 7, 8, 9}, 9)
                             .Get();
    for (std::size_t nEnd = 0; nEnd <= stream.size(); ++nEnd) {
        SCOPED_TRACE(nEnd);
        Start();
        Walk(Bytes(stream.begin(), stream.begin() + nEnd));
        if (stream.size() - nEnd < 4) {
            EXPECT_EQ(decoder.Rdlgth, 4 + 9 - static_cast<int>(stream.size() - nEnd));
        }
    }
}

TEST_F(PsStreamTest, LengthSmallerThanTheHeaderHasNoPayload)
{
    const Bytes tail = ProgramStream().Private(0x22, m_two).Get();
    for (int nLength = 0; nLength < 24; ++nLength) {
        SCOPED_TRACE(nLength);
        Bytes stream = ProgramStream().Private(0x20, m_one, 10).Get();
        stream[5] = static_cast<std::uint8_t>(nLength); // the right length is 17
        stream.insert(stream.end(), tail.begin(), tail.end());
        Start();
        Walk(stream);
        if (nLength < 14) {
            EXPECT_EQ(decoder.Rdlgth, 4);
        }
        if (nLength == 17) {
            EXPECT_EQ(decoder.Rdlgth, 9);
        }
    }
}

TEST_F(PsStreamTest, RandomStreams)
{
    std::mt19937 random(77);
    for (int nTime = 0; nTime < 20000 && !HasFailure(); ++nTime) {
        SCOPED_TRACE(nTime);
        ProgramStream stream;
        for (unsigned n = random() % 6; n > 0; --n) {
            switch (random() % 4) {
            case 0:
                stream.PackHeader(static_cast<int>(random() % 8));
                break;
            case 1:
                stream.Padding(random() % 20);
                break;
            default:
                stream.Private(static_cast<int>(0x1C + random() % 40),
                               Bytes(random() % 9, static_cast<std::uint8_t>(random())),
                               static_cast<int>(random() % 12));
                break;
            }
        }
        Bytes bytes = stream.Get();
        for (unsigned n = random() % 3; n > 0 && !bytes.empty(); --n)
            bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random() % (random() % 2 ? 256 : 24));
        bytes.resize(bytes.size() - (random() % 2 ? random() % (bytes.size() + 1) : 0));
        Start();
        Walk(bytes);
    }
}

TEST_F(PsStreamTest, SelfTestWithoutItsFileDoesNothing)
{
    const TemporaryFolder folder;
    const CurrentFolder current(folder.Path());
    Feed(PictureUnit::Filled(1, 0, 5, 4).Encode());
    TestVobSub();
    EXPECT_TRUE(subtitle_is_set_up());
    EXPECT_EQ(Row(3), ".11111..");
    ExpectSame();
}

TEST_F(PsStreamTest, SelfTestReads4096BytesAndReleasesTheDecoder)
{
    const TemporaryFolder folder;
    const CurrentFolder current(folder.Path());
    ProgramStream stream;
    stream.PackHeader(0).Private(0x20, PictureUnit::Filled(700, 470, 20, 10).Encode());
    stream.Padding(4096 - 6 - stream.Get().size());
    stream.Private(0x20, PictureUnit::Filled(10, 20, 30, 4).Encode());
    folder.Write("vobsubtest.sub", {stream.Get().begin(), stream.Get().end()});
    TestVobSub();
    EXPECT_FALSE(subtitle_is_set_up());
    EXPECT_EQ(Coded_Picture_Width, 720);
    EXPECT_EQ(Coded_Picture_Height, 480);
    EXPECT_EQ(mediadata.top, 472);
    EXPECT_EQ(mediadata.bottom, 479);
    const unsigned listPalette[16] = {0x0000E1, 0xE83F07, 0x000000, 0xFDFDFD, 0x11EB10, 0xEA12EB, 0xFAFF1A, 0x095D76,
                                      0x7C7C7C, 0xE0E0E0, 0x7F6AEF, 0x14BEF3, 0x00006C, 0xF0B710, 0x0A48EA, 0x730972};
    for (int k = 0; k < 16; ++k)
        EXPECT_EQ(static_cast<unsigned>(decoder.sub_pal[k].v << 16 | decoder.sub_pal[k].u << 8 | decoder.sub_pal[k].y),
                  listPalette[k]);
}

TEST_F(PsStreamTest, ManySmallUnitsInOneWalkLeaveNothingOfEachOther)
{
    Init(31, 17);
    std::mt19937 random(6);
    const auto below = [&](int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); };
    for (int round = 0; round < 200; ++round) {
        ProgramStream stream;
        for (int n = 1 + below(6); n > 0; --n) {
            const int x = below(31);
            const int y = below(17);
            PictureUnit unit = PictureUnit::Filled(x, y, 1 + below(31 - x), 1 + below(17 - y), below(4));
            unit.nContrasts = random() & 0xFFFF;
            stream.Private(0x20, unit.Encode());
        }
        // What a host writes into the canvas is cleared by the next walk's first unit.
        const int place = below(31 * 17);
        mediadata.plane[3][place] = m_plain.m_listPlanes[3][place] = 0x55;
        Walk(stream);
    }
}

TEST_F(PsStreamTest, SelfTestOfShortFiles)
{
    const TemporaryFolder folder;
    const CurrentFolder current(folder.Path());
    const Bytes unit = ProgramStream().Private(0x20, PictureUnit::Filled(10, 20, 30, 4).Encode()).Get();
    for (const std::size_t nSize : {std::size_t{0}, std::size_t{3}, unit.size() - 1, unit.size()}) {
        Init(8, 4);
        mediadata.top = -1;
        folder.Write("vobsubtest.sub", {unit.begin(), unit.begin() + nSize});
        TestVobSub();
        EXPECT_FALSE(subtitle_is_set_up());
        EXPECT_EQ(mediadata.top, nSize == unit.size() ? 22 : -1);
    }
}
