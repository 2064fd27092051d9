#include "media/seireader.h"

#include "media/hdrmetadata.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <vector>

namespace
{

// Types of units and SEI messages.
const int LastSlice = 5;
const int SeiUnit = 6;
const size_t MasteringDisplay = 137;
const size_t ContentLight = 144;

const size_t DisplaySize = 24;
const size_t LightSize = 4;

struct Unit {
    const uint8_t *pData;
    size_t nSize;

    int Type() const { return nSize > 0 ? *pData & 0x1F : 0; }
    bool IsSlice() const { return Type() >= 1 && Type() <= LastSlice; }
};

uint32_t BigEndian(const uint8_t *pData, size_t nBytes)
{
    uint32_t nValue = 0;
    for (size_t n = 0; n < nBytes; ++n)
        nValue = nValue << 8 | pData[n];
    return nValue;
}

const std::array<uint8_t, 3> StartCode = {0, 0, 1};

/**
 * Takes the next unit from the front of the rest of a packet; of a packet with start codes, all that is left once it
 * begins with a slice, as searching those for the next start code takes long. @return an empty one at the end.
 */
Unit TakeUnit(const uint8_t *&pData, const uint8_t *pEnd, size_t nLengthBytes)
{
    const auto nLeft = static_cast<size_t>(pEnd - pData);
    if (nLengthBytes == 0) {
        const uint8_t *pBegin = std::search(pData, pEnd, StartCode.begin(), StartCode.end());
        pBegin += std::min<ptrdiff_t>(pEnd - pBegin, StartCode.size());
        const Unit rest = {pBegin, static_cast<size_t>(pEnd - pBegin)};
        pData = rest.IsSlice() ? pEnd : std::search(pBegin, pEnd, StartCode.begin(), StartCode.end());
        return {pBegin, static_cast<size_t>(pData - pBegin)};
    }
    const size_t nSize = nLeft >= nLengthBytes ? BigEndian(pData, nLengthBytes) : 0;
    if (nSize == 0 || nSize > nLeft - nLengthBytes) {
        pData = pEnd;
        return {pEnd, 0};
    }
    const Unit unit = {pData + nLengthBytes, nSize};
    pData = unit.pData + nSize;
    return unit;
}

/** Removes the bytes that keep start codes out of a unit. */
std::vector<uint8_t> Unescaped(const uint8_t *pData, size_t nSize)
{
    std::vector<uint8_t> listBytes;
    listBytes.reserve(nSize);
    int nZeros = 0;
    for (size_t n = 0; n < nSize; ++n) {
        if (nZeros >= 2 && pData[n] == 3) {
            nZeros = 0;
            continue;
        }
        nZeros = pData[n] == 0 ? nZeros + 1 : 0;
        listBytes.push_back(pData[n]);
    }
    return listBytes;
}

/** Takes a number from the front of a payload. */
AVRational TakeFraction(const uint8_t *&pPayload, size_t nBytes, int nUnits)
{
    const uint32_t nValue = BigEndian(pPayload, nBytes);
    pPayload += nBytes;
    return {static_cast<int>(std::min<uint32_t>(nValue, INT32_MAX)), nUnits};
}

AVMasteringDisplayMetadata DisplayIn(const uint8_t *pPayload)
{
    AVMasteringDisplayMetadata display = {};
    // Green comes first, then blue and red.
    for (AVRational *pPoint : {display.display_primaries[1], display.display_primaries[2], display.display_primaries[0],
                               display.white_point}) {
        pPoint[0] = TakeFraction(pPayload, 2, CoordinateUnits);
        pPoint[1] = TakeFraction(pPayload, 2, CoordinateUnits);
    }
    display.max_luminance = TakeFraction(pPayload, 4, LuminanceUnits);
    display.min_luminance = TakeFraction(pPayload, 4, LuminanceUnits);
    display.has_primaries = 1;
    display.has_luminance = 1;
    return display;
}

} // namespace

SeiReader::SeiReader(const AVCodecParameters &stream) : m_bH264(stream.codec_id == AV_CODEC_ID_H264)
{
    // A configuration record (ISO/IEC 14496-15) begins with 1, start codes with 0.
    if (m_bH264 && stream.extradata_size >= 7 && stream.extradata[0] == 1)
        m_nLengthBytes = (stream.extradata[4] & 3) + 1;
}

void SeiReader::Read(const uint8_t *pPacket, size_t nSize)
{
    if (!m_bH264)
        return;
    const uint8_t *const pEnd = pPacket + nSize;
    while (pPacket < pEnd) {
        const Unit unit = TakeUnit(pPacket, pEnd, m_nLengthBytes);
        if (unit.Type() == SeiUnit)
            ReadMessages(unit.pData + 1, unit.nSize - 1);
        else if (unit.IsSlice())
            return;
    }
}

void SeiReader::ReadMessages(const uint8_t *pUnit, size_t nSize)
{
    const std::vector<uint8_t> listBytes = Unescaped(pUnit, nSize);
    auto at = listBytes.begin();
    // A number is the sum of its bytes, and 255 is not the last of them.
    const auto TakeNumber = [&](size_t &nNumber) {
        nNumber = 0;
        while (at != listBytes.end()) {
            nNumber += *at;
            if (*at++ != 0xFF)
                return true;
        }
        return false;
    };
    size_t nType = 0;
    size_t nPayload = 0;
    while (TakeNumber(nType) && TakeNumber(nPayload) && nPayload <= static_cast<size_t>(listBytes.end() - at)) {
        ReadMessage(nType, listBytes.data() + (at - listBytes.begin()), nPayload);
        at += static_cast<ptrdiff_t>(nPayload);
    }
}

void SeiReader::ReadMessage(size_t nType, const uint8_t *pPayload, size_t nSize)
{
    if (nType == MasteringDisplay && nSize >= DisplaySize)
        m_display = DisplayIn(pPayload);
    else if (nType == ContentLight && nSize >= LightSize)
        m_light = AVContentLightMetadata{BigEndian(pPayload, 2), BigEndian(pPayload + 2, 2)};
}

void SeiReader::AddTo(AVFrame &frame) const
{
    if (m_display && !av_frame_get_side_data(&frame, AV_FRAME_DATA_MASTERING_DISPLAY_METADATA))
        *Checked(av_mastering_display_metadata_create_side_data(&frame)) = *m_display;
    if (m_light && !av_frame_get_side_data(&frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL))
        *Checked(av_content_light_metadata_create_side_data(&frame)) = *m_light;
}
