#include "vobsub/decoderstate.h"
#include "vobsub/subtitledecoder.h"

namespace
{

int PeekByte()
{
    return decoder.Rdptr && decoder.Rdptr < decoder.Rdbfr + Rdbfr_size ? *decoder.Rdptr : 0;
}

void NextByte()
{
    if (decoder.Rdptr && decoder.Rdptr < decoder.Rdbfr + Rdbfr_size)
        ++decoder.Rdptr;
}

} // namespace

int Get_HalfByte()
{
    const int byte = PeekByte();
    decoder.RdLeft = !decoder.RdLeft;
    if (decoder.RdLeft)
        return byte >> 4;
    NextByte();
    return byte & 15;
}

int Get_Byte()
{
    decoder.RdLeft = false;
    const int byte = PeekByte();
    NextByte();
    return byte;
}

int Get_Short()
{
    const int high = Get_Byte();
    return high << 8 | Get_Byte();
}

void Skip_Half_Read()
{
    if (decoder.RdLeft)
        NextByte();
    decoder.RdLeft = false;
}
