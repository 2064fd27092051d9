#include "vobsub/decoderstate.h"
#include "vobsub/subtitledecoder.h"

unsigned char Rdbfr[Rdbfr_size];
int Rdlgth;
unsigned char *Rdptr;
bool RdLeft;

namespace
{

int PeekByte()
{
    return Rdptr && Rdptr < Rdbfr + Rdbfr_size ? *Rdptr : 0;
}

void NextByte()
{
    if (Rdptr && Rdptr < Rdbfr + Rdbfr_size)
        ++Rdptr;
}

} // namespace

int Get_HalfByte()
{
    const int byte = PeekByte();
    RdLeft = !RdLeft;
    if (RdLeft)
        return byte >> 4;
    NextByte();
    return byte & 15;
}

int Get_Byte()
{
    RdLeft = false;
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
    if (RdLeft)
        NextByte();
    RdLeft = false;
}
