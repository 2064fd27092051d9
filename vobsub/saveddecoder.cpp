#include "vobsub/decoderstate.h"

#include <algorithm>
#include <cstring>

saved_decoder::saved_decoder() :
    is_set_up(subtitle_is_set_up()),
    canvas(mediadata),
    width(Coded_Picture_Width),
    height(Coded_Picture_Height),
    held(Rdbfr, Rdbfr + Rdlgth),
    position(is_set_up ? Rdptr - Rdbfr : 0),
    is_half_read(RdLeft),
    packet_size(subt_packet_size),
    data_size(subt_data_size)
{
    std::copy(std::begin(sub_pal), std::end(sub_pal), palette);
    Rdptr = nullptr;
}

saved_decoder::~saved_decoder()
{
    if (is_set_up)
        Free_Canvas(canvas);
}

void saved_decoder::Restore()
{
    subtitle_release();
    if (!is_set_up)
        return;
    is_set_up = false;
    mediadata = canvas;
    Coded_Picture_Width = Chroma_Width = width;
    Coded_Picture_Height = Chroma_Height = height;
    std::copy(std::begin(palette), std::end(palette), sub_pal);
    std::copy(held.begin(), held.end(), Rdbfr);
    Rdlgth = static_cast<int>(held.size());
    Rdptr = Rdbfr + position;
    RdLeft = is_half_read;
    subt_packet_size = packet_size;
    subt_data_size = data_size;
    Clear_Area();
}
