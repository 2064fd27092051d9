#include "vobsub/psstream.h"

#include "textio/regularfile.h"
#include "vobsub/decoderstate.h"
#include "vobsub/subtitledecoder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <unistd.h>

namespace
{

constexpr int PrivateStream1 = 0xBD;
constexpr int PaddingStream = 0xBE;
constexpr int PackHeader = 0xBA;

/** Decodes the payload of a packet of a sub-picture stream, ignores other packets. Cuts the packet at @p end. */
void DecodePacket(const unsigned char *p, const unsigned char *end, int length)
{
    if (end - p < 9)
        return;
    const int headerLength = p[8];
    if (end - p < 9 + headerLength + 1)
        return;
    const int subStream = p[9 + headerLength];
    if (subStream < 0x20 || subStream > 0x3F)
        return;
    const unsigned char *const payload = p + headerLength + 10;
    const std::ptrdiff_t held = end - payload;
    subtitle_decode(payload, static_cast<int>(std::min<std::ptrdiff_t>(length - headerLength - 4, held)));
}

/** Decodes the packet at @p p. @return its length; 0 if its stream id is unknown or its header is incomplete */
std::ptrdiff_t WalkPacket(const unsigned char *p, const unsigned char *end)
{
    const int id = p[3];
    if (id == PackHeader)
        return end - p < 14 ? 0 : 14 + (p[13] & 7);
    if ((id != PrivateStream1 && id != PaddingStream) || end - p < 6)
        return 0;
    const int length = p[4] << 8 | p[5];
    if (id == PrivateStream1)
        DecodePacket(p, end, length);
    return length + 6;
}

bool StartsPacket(const unsigned char *p, std::ptrdiff_t left)
{
    return left > 4 && p[0] == 0 && p[1] == 0 && p[2] == 1;
}

/** Reads the file's first bytes. @return their number, less than @p count at the end of the file or after an error */
int ReadBeginning(int descriptor, unsigned char *bytes, int count)
{
    int held = 0;
    while (held < count) {
        const std::int64_t got = ReadSome(descriptor, bytes + held, static_cast<std::size_t>(count - held));
        if (got <= 0)
            break;
        held += static_cast<int>(got);
    }
    return held;
}

} // namespace

void DecodePSStream(unsigned char *buf, int len)
{
    const unsigned char *p = buf;
    std::ptrdiff_t left = len;
    Begin_Walk();
    while (StartsPacket(p, left)) {
        const std::ptrdiff_t length = WalkPacket(p, p + left);
        if (length == 0 || length >= left)
            break;
        p += length;
        left -= length;
    }
    End_Walk();
}

void TestVobSub()
{
    static const unsigned int palette[16] = {0x000000E1, 0x00E83F07, 0x00000000, 0x00FDFDFD, 0x0011EB10, 0x00EA12EB,
                                             0x00FAFF1A, 0x00095D76, 0x007C7C7C, 0x00E0E0E0, 0x007F6AEF, 0x0014BEF3,
                                             0x0000006C, 0x00F0B710, 0x000A48EA, 0x00730972};
    const int descriptor = OpenRegularFile("vobsubtest.sub");
    if (descriptor < 0)
        return;
    unsigned char bytes[4096] = {};
    const int held = ReadBeginning(descriptor, bytes, sizeof bytes);
    close(descriptor);
    subtitle_init(palette, 720, 480);
    DecodePSStream(bytes, held);
    subtitle_release();
}
