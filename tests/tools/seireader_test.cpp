#include "media/seireader.h"

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/mastering_display_metadata.h>
}

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace
{

using Bytes = std::vector<uint8_t>;

Bytes operator+(Bytes first, const Bytes &second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

/** Green, blue and red, white, 1000 and 0.005 cd/m2. */
const Bytes Display = {137,  24,   0x33, 0xC2, 0x86, 0xC4, 0x1D, 0x4C, 0x0B, 0xB8, 0x84, 0xD0, 0x3E,
                       0x80, 0x3D, 0x13, 0x40, 0x42, 0x00, 0x98, 0x96, 0x80, 0x00, 0x00, 0x00, 0x32};
const Bytes Light = {144, 4, 0x03, 0xE8, 0x01, 0x90};
const Bytes Stop = {0x80};
const Bytes Slice = {0x65, 0x88, 0x84};

/** With the bytes that keep start codes out of a unit. */
Bytes Escaped(const Bytes &listBytes)
{
    Bytes listEscaped;
    int nZeros = 0;
    for (const uint8_t nByte : listBytes) {
        if (nZeros >= 2 && nByte <= 3) {
            listEscaped.push_back(3);
            nZeros = 0;
        }
        listEscaped.push_back(nByte);
        nZeros = nByte == 0 ? nZeros + 1 : 0;
    }
    return listEscaped;
}

Bytes Sei(const Bytes &listMessages)
{
    return Bytes{6} + Escaped(listMessages + Stop);
}

Bytes AfterStartCode(const Bytes &listUnit)
{
    return Bytes{0, 0, 0, 1} + listUnit;
}

Bytes AfterLength(const Bytes &listUnit, size_t nBytes)
{
    Bytes listPacket;
    for (size_t n = nBytes; n-- > 0;)
        listPacket.push_back(static_cast<uint8_t>(n >= sizeof(size_t) ? 0 : listUnit.size() >> (8 * n)));
    return listPacket + listUnit;
}

class SeiReaderTest : public testing::Test
{
protected:
    void SetUp() override { m_stream.codec_id = AV_CODEC_ID_H264; }

    /** The metadata of a frame after a packet, "-" for what there is none of. The packet has no spare bytes at its end. */
    std::string Read(const Bytes &listPacket) const
    {
        SeiReader reader(m_stream);
        return Read(reader, listPacket);
    }

    static std::string Read(SeiReader &reader, const Bytes &listPacket)
    {
        const std::unique_ptr<uint8_t[]> pExact(new uint8_t[listPacket.size()]);
        std::copy(listPacket.begin(), listPacket.end(), pExact.get());
        reader.Read(pExact.get(), listPacket.size());
        const FramePtr pFrame = NewFrame();
        reader.AddTo(*pFrame);
        return Text(*pFrame);
    }

    static std::string Text(const AVFrame &frame)
    {
        std::string strText;
        const auto Add = [&](AVRational value) {
            strText += std::to_string(value.num) + "/" + std::to_string(value.den) + " ";
        };
        if (const AVFrameSideData *pData = av_frame_get_side_data(&frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA)) {
            const auto &display = *reinterpret_cast<const AVMasteringDisplayMetadata *>(pData->data);
            EXPECT_TRUE(display.has_primaries && display.has_luminance);
            for (const auto &primary : display.display_primaries) {
                Add(primary[0]);
                Add(primary[1]);
            }
            Add(display.white_point[0]);
            Add(display.white_point[1]);
            Add(display.max_luminance);
            Add(display.min_luminance);
        } else {
            strText += "- ";
        }
        const AVFrameSideData *pData = av_frame_get_side_data(&frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL);
        if (!pData)
            return strText + "-";
        const auto &light = *reinterpret_cast<const AVContentLightMetadata *>(pData->data);
        return strText + std::to_string(light.MaxCLL) + " " + std::to_string(light.MaxFALL);
    }

    /** Makes units follow lengths of some bytes. */
    void SetLengthBytes(int nBytes)
    {
        m_listRecord = {1, 100, 0, 30, static_cast<uint8_t>(0xFC | (nBytes - 1)), 0xE0, 0};
        m_stream.extradata = m_listRecord.data();
        m_stream.extradata_size = static_cast<int>(m_listRecord.size());
    }

    AVCodecParameters m_stream = {};
    Bytes m_listRecord;
};

const std::string DisplayText = "34000/50000 16000/50000 13250/50000 34500/50000 7500/50000 3000/50000 15635/50000 "
                                "16450/50000 10000000/10000 50/10000 ";
const std::string Nothing = "- -";

} // namespace

TEST_F(SeiReaderTest, ReadsBothMessages)
{
    const Bytes listUnit = AfterStartCode(Sei(Display + Light));
    EXPECT_EQ(Read(listUnit + AfterStartCode(Slice)), DisplayText + "1000 400");
    EXPECT_EQ(Read(listUnit), DisplayText + "1000 400");
    EXPECT_EQ(Read(AfterStartCode(Sei(Display))), DisplayText + "-");
    EXPECT_EQ(Read(AfterStartCode(Sei(Light))), "- 1000 400");
    EXPECT_EQ(Read(AfterStartCode({9, 0xF0}) + AfterStartCode(Sei(Light)) + AfterStartCode(Sei(Display))),
              DisplayText + "1000 400");
}

TEST_F(SeiReaderTest, ReadsUnitsAfterLengths)
{
    for (const int nBytes : {1, 2, 3, 4}) {
        SetLengthBytes(nBytes);
        EXPECT_EQ(Read(AfterLength(Sei(Display + Light), nBytes) + AfterLength(Slice, nBytes)),
                  DisplayText + "1000 400")
            << nBytes;
    }
    EXPECT_EQ(Read(AfterStartCode(Sei(Light))), Nothing);
}

TEST_F(SeiReaderTest, OtherMessagesAndLongerOnesAreSkipped)
{
    const Bytes listLong = Bytes{0xFF, 0xFF, 2, 0xFF, 45} + Bytes(300, 0x55); // type 512, 300 bytes
    EXPECT_EQ(Read(AfterStartCode(Sei(listLong + Light))), "- 1000 400");
    EXPECT_EQ(Read(AfterStartCode(Sei(Bytes{144, 6, 0, 7, 0, 8, 9, 9} + Display))), DisplayText + "7 8");
    EXPECT_EQ(Read(AfterStartCode(Sei(Bytes{144, 3, 0, 7, 0} + Display))), DisplayText + "-");
}

TEST_F(SeiReaderTest, BytesThatPreventStartCodesAreRemoved)
{
    const Bytes listZeros = Bytes{137, 24} + Bytes(23, 0) + Bytes{1};
    const Bytes listUnit = Sei(listZeros);
    EXPECT_GT(listUnit.size(), listZeros.size() + 10);
    EXPECT_EQ(Read(AfterStartCode(listUnit)), "0/50000 0/50000 0/50000 0/50000 0/50000 0/50000 0/50000 0/50000 0/10000 "
                                              "1/10000 -");
}

TEST_F(SeiReaderTest, LuminanceBeyondAnIntegerIsTheLargest)
{
    Bytes listBright = Display;
    std::fill_n(listBright.begin() + 18, 4, 0xFF);
    EXPECT_NE(Read(AfterStartCode(Sei(listBright))).find(" 2147483647/10000 50/10000 "), std::string::npos);
}

TEST_F(SeiReaderTest, MessagesAfterTheFirstSliceAreNotRead)
{
    EXPECT_EQ(Read(AfterStartCode(Slice) + AfterStartCode(Sei(Light))), Nothing);
    SetLengthBytes(4);
    EXPECT_EQ(Read(AfterLength(Slice, 4) + AfterLength(Sei(Light), 4)), Nothing);
}

TEST_F(SeiReaderTest, WhatIsCutOffIsIgnored)
{
    const Bytes listMessages = Sei(Display + Light);
    for (const bool bLengths : {false, true}) {
        if (bLengths)
            SetLengthBytes(4);
        const Bytes listWhole = bLengths ? AfterLength(listMessages, 4) : AfterStartCode(listMessages);
        for (size_t nSize = 0; nSize < listWhole.size(); ++nSize) {
            const std::string strText = Read(Bytes(listWhole.begin(), listWhole.begin() + static_cast<long>(nSize)));
            if (bLengths)
                EXPECT_EQ(strText, Nothing) << nSize;
            else if (nSize == listWhole.size() - 1) // without the stop bit
                EXPECT_EQ(strText, DisplayText + "1000 400");
            else
                EXPECT_EQ(strText, nSize < 5 + Escaped(Display).size() ? Nothing : DisplayText + "-") << nSize;
        }
    }
}

TEST_F(SeiReaderTest, ImpossibleLengthsAreIgnored)
{
    SetLengthBytes(4);
    EXPECT_EQ(Read(Bytes{0xFF, 0xFF, 0xFF, 0xFF} + Sei(Light)), Nothing);
    EXPECT_EQ(Read(Bytes{0, 0, 0, 0} + AfterLength(Sei(Light), 4)), Nothing);
    EXPECT_EQ(Read(AfterLength({6}, 4)), Nothing);
    EXPECT_EQ(Read({}), Nothing);
    EXPECT_EQ(Read(AfterLength(Bytes{6} + Bytes(1000, 0xFF), 4)), Nothing);
}

TEST_F(SeiReaderTest, RandomBytesAreReadWithinTheirBounds)
{
    std::mt19937 random(1);
    for (int nRound = 0; nRound < 20000; ++nRound) {
        SetLengthBytes(nRound % 4 + 1);
        if (nRound % 5 == 0)
            m_stream.extradata_size = 0;
        Bytes listBytes(random() % 64);
        for (uint8_t &nByte : listBytes)
            nByte = std::array<uint8_t, 8>{0, 0, 1, 3, 6, 137, 24, 0xFF}[random() % 8];
        Read(listBytes);
    }
}

TEST_F(SeiReaderTest, LastMessagesCountUntilOthersCome)
{
    SeiReader reader(m_stream);
    EXPECT_EQ(Read(reader, AfterStartCode(Sei(Light))), "- 1000 400");
    EXPECT_EQ(Read(reader, AfterStartCode(Slice)), "- 1000 400");
    EXPECT_EQ(Read(reader, AfterStartCode(Sei({144, 4, 0, 5, 0, 4}))), "- 5 4");
}

TEST_F(SeiReaderTest, MetadataThatAFrameHasStays)
{
    SeiReader reader(m_stream);
    const Bytes listPacket = AfterStartCode(Sei(Display + Light));
    reader.Read(listPacket.data(), listPacket.size());
    const FramePtr pFrame = NewFrame();
    Checked(av_content_light_metadata_create_side_data(pFrame.get()))->MaxCLL = 3;
    reader.AddTo(*pFrame);
    EXPECT_EQ(Text(*pFrame), DisplayText + "3 0");
    EXPECT_EQ(pFrame->nb_side_data, 2);
}

TEST_F(SeiReaderTest, OtherCodecsAreNotRead)
{
    m_stream.codec_id = AV_CODEC_ID_HEVC;
    EXPECT_EQ(Read(AfterStartCode(Sei(Display + Light))), Nothing);
}
