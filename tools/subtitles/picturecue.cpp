#include "subtitles/picturecue.h"

extern "C" {
#include <libavutil/intreadwrite.h>
}

namespace
{

// A composition segment: type, length, size, frame rate, number, state and palette come before the object count.
const uint8_t BluRayComposition = 0x16;
const int BluRayCountAt = 13;

const int DvdStop = 2;
const int DvdEnd = 0xff;
const int DvdBlockHeader = 4;

/** Bytes of a command with its parameters; 0 if it is unknown or of variable length. */
int DvdCommandSize(int nCommand)
{
    static const std::array<int, 7> Sizes = {1, 1, 1, 3, 3, 7, 5};
    return nCommand < static_cast<int>(Sizes.size()) ? Sizes[nCommand] : 0;
}

bool DvdBlockStops(const uint8_t *pData, int nBlock, int nSize)
{
    int nStep = 1;
    for (int n = nBlock + DvdBlockHeader; n < nSize && pData[n] != DvdEnd && nStep > 0; n += nStep) {
        if (pData[n] == DvdStop)
            return true;
        nStep = DvdCommandSize(pData[n]);
    }
    return false;
}

} // namespace

int64_t DvdDuration(const AVPacket &packet)
{
    if (packet.size < DvdBlockHeader)
        return 0;
    int nBlock = AV_RB16(packet.data + 2);
    while (nBlock + DvdBlockHeader <= packet.size) {
        if (DvdBlockStops(packet.data, nBlock, packet.size))
            return AV_RB16(packet.data + nBlock) * 1024 / 90;
        const int nNext = AV_RB16(packet.data + nBlock + 2);
        if (nNext <= nBlock)
            break;
        nBlock = nNext;
    }
    return 0;
}

bool BeginsBluRayPage(const AVPacket &packet)
{
    return packet.size > BluRayCountAt && packet.data[0] == BluRayComposition;
}

bool ShowsBluRayPicture(const AVPacket &packet)
{
    return BeginsBluRayPage(packet) && packet.data[BluRayCountAt] > 0;
}
