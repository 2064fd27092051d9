#include "vobsub/subtitledecoder.h"

#include "vobsub/decoderstate.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

int32_t Coded_Picture_Width;
int32_t Coded_Picture_Height;
int32_t Chroma_Width;
int32_t Chroma_Height;
int32_t chroma_format;
int32_t Subt_Color;
int32_t Subt_Offset;
subtitle_canvas mediadata;

int subt_packet_size;
int subt_data_size;

namespace
{

constexpr int HeaderSize = 4;    // of a unit: its size, then where its control area begins
constexpr int PlanePadding = 64; // scalers read whole vectors

/** What a unit's commands say; its words are 0 where a unit has no such command. */
struct unit_control {
    int x1, x2, y1, y2;
    int off1, off2;
    unsigned int colour_word, alpha_word;
};

unsigned char *AllocatePlanes(int count, int padding)
{
    return static_cast<unsigned char *>(malloc(static_cast<size_t>(count) * Canvas_Size() + padding));
}

/** False, and no plane left, where there is no memory. */
bool AllocateCanvas()
{
    mediadata.plane[0] = AllocatePlanes(3, PlanePadding);
    mediadata.plane[3] = AllocatePlanes(1, PlanePadding);
    for (unsigned char *&plane : mediadata.out)
        plane = AllocatePlanes(1, 0);
    if (mediadata.plane[0] && mediadata.plane[3] && mediadata.out[0] && mediadata.out[1] && mediadata.out[2]) {
        mediadata.plane[1] = mediadata.plane[0] + Canvas_Size();
        mediadata.plane[2] = mediadata.plane[1] + Canvas_Size();
        memset(mediadata.plane[0], 0, Canvas_Size());
        memset(mediadata.plane[1], 128, 2 * Canvas_Size() + PlanePadding);
        memset(mediadata.plane[3], 0, Canvas_Size() + PlanePadding);
        return true;
    }
    Free_Canvas(mediadata);
    return false;
}

/** A unit that cannot be what it says: nothing shows, and the next bytes begin a new one. */
void Refuse()
{
    subtitle_drop_input();
    Init_RleOutput(0, 0, 0, 0, 0, 0);
}

int ReadThreeNibbles()
{
    const int high = Get_HalfByte();
    const int middle = Get_HalfByte();
    return high * 256 + middle * 16 + Get_HalfByte();
}

/** Any byte that is no command is passed over, and so is the forced display 0x00. */
void ReadCommand(int command, int time, unit_control &control)
{
    switch (command) {
    case 0x01:
        mediadata.start = time;
        break;
    case 0x02:
        mediadata.stop = time;
        break;
    case 0x03:
        control.colour_word = Get_Short();
        break;
    case 0x04:
        control.alpha_word = Get_Short();
        break;
    case 0x05:
        control.x1 = ReadThreeNibbles();
        control.x2 = ReadThreeNibbles();
        control.y1 = ReadThreeNibbles();
        control.y2 = ReadThreeNibbles();
        break;
    case 0x06:
        control.off1 = Get_Short() - HeaderSize;
        control.off2 = Get_Short() - HeaderSize;
        break;
    default:
        break;
    }
}

/**
 * A sequence is laid out as delay, offset of the next, commands, 0xFF. The walk ends where two delays are equal, and takes
 * the time from the offset: this is meant.
 */
unit_control WalkControl()
{
    const unsigned char *const end = Rdbfr + Rdlgth;
    unit_control control = {};
    int previous = Get_Short();
    for (;;) {
        const int delay = Get_Short();
        int command = Get_Byte();
        if (command != 0xFF) {
            const int time = delay * 1024 / 90; // ms
            do {
                ReadCommand(command, time, control);
                command = Get_Byte();
            } while (Rdptr < end && command != 0xFF);
        }
        const int word = Get_Short();
        if (Rdptr >= end || word == previous)
            return control;
        previous = word;
    }
}

void DecodeCode()
{
    int code = Get_HalfByte();
    if (code == 0) {
        code = Get_HalfByte();
        if (code == 0) {
            Get_HalfByte();
            Get_HalfByte();
            End_Line();
            return;
        }
        const bool isLong = code < 4;
        code = code * 16 + Get_HalfByte();
        if (isLong)
            code = code * 16 + Get_HalfByte();
    } else if (code < 4) {
        code = code * 16 + Get_HalfByte();
    }
    Rle_Output(code);
}

/** Both fields stop 4 bytes before the control area, so that the last pixel data is never shown: this is meant. */
void DecodeFields(const unit_control &control)
{
    unsigned char *const base = Rdbfr + HeaderSize;
    const unsigned char *const end = Rdbfr + subt_data_size - 4;

    second_picture = false;
    Rdptr = base + control.off1;
    while (Rdptr < end && !second_picture)
        DecodeCode();

    // A nibble left over from the top field is not dropped: this is meant.
    Begin_Field(1);
    Rdptr = base + control.off2;
    while (Rdptr < end)
        DecodeCode();
}

bool IsInUnit(int offset)
{
    return offset + HeaderSize <= subt_packet_size;
}

void DecodeUnit()
{
    if (subt_data_size < HeaderSize || subt_data_size >= subt_packet_size) {
        Refuse();
        return;
    }
    RdLeft = false;
    Rdptr = Rdbfr + subt_data_size;
    const unit_control control = WalkControl();
    if (!IsInUnit(control.off1) || !IsInUnit(control.off2)) {
        Refuse();
        return;
    }
    Init_RleOutput(control.x1, control.y1, control.x2 - control.x1 + 1, control.y2 - control.y1 + 1, control.alpha_word,
                   control.colour_word);
    DecodeFields(control);
    mediadata.top += subt_org_y;
    mediadata.bottom = std::min(mediadata.bottom + subt_org_y, Coded_Picture_Height - 1);

    // What is held beyond the unit is taken from where its pixel data ended, not from its own end: this is meant.
    Rdlgth -= subt_packet_size;
    memmove(Rdbfr, Rdptr, Rdlgth);
    Rdptr = Rdbfr;
}

} // namespace

int Canvas_Size()
{
    return Coded_Picture_Width * Coded_Picture_Height;
}

void Free_Canvas(const subtitle_canvas &canvas)
{
    free(canvas.plane[0]);
    free(canvas.plane[3]);
    for (unsigned char *plane : canvas.out)
        free(plane);
}

bool subtitle_is_set_up()
{
    return Rdptr != nullptr;
}

void subtitle_drop_input()
{
    if (!Rdptr)
        return;
    Rdptr = Rdbfr;
    RdLeft = false;
    Rdlgth = subt_packet_size = subt_data_size = 0;
}

int subtitle_init(const unsigned int *palette, int width, int height)
{
    for (int k = 0; k < 16; ++k) {
        const unsigned int word = palette[k];
        // No conversion of colours: hosts make their palettes for this.
        sub_pal[k] = {static_cast<unsigned char>(word), static_cast<unsigned char>(word >> 16),
                      static_cast<unsigned char>(word >> 8)};
    }
    subtitle_release();

    Subt_Color = 1;
    Subt_Offset = 0;
    chroma_format = 3;
    const bool isPossible = width >= 1 && height >= 1 && width <= SUBTITLE_MAX_SIDE && height <= SUBTITLE_MAX_SIDE;
    Coded_Picture_Width = isPossible ? width : 0;
    Coded_Picture_Height = isPossible ? height : 0;
    if (!isPossible || !AllocateCanvas()) {
        mediadata.plane[0] = mediadata.plane[1] = mediadata.plane[2] = mediadata.plane[3] = nullptr;
        mediadata.out[0] = mediadata.out[1] = mediadata.out[2] = nullptr;
        Coded_Picture_Width = Coded_Picture_Height = 0;
    }
    Chroma_Width = Coded_Picture_Width;
    Chroma_Height = Coded_Picture_Height;
    Rdptr = Rdbfr;
    subtitle_drop_input();
    Clear_Area();
    return 1;
}

void subtitle_release()
{
    if (!Rdptr)
        return;
    Free_Canvas(mediadata);
    Rdptr = nullptr;
}

int subtitle_decode(const unsigned char *data, int len)
{
    if (!Rdptr || len < 0)
        return 1;
    if (len > Rdbfr_size - Rdlgth) {
        Refuse();
        return 1;
    }
    if (len > 0)
        memcpy(Rdbfr + Rdlgth, data, len);
    Rdlgth += len;
    if (Rdptr == Rdbfr) {
        if (Rdlgth < HeaderSize)
            return 1;
        subt_packet_size = Get_Short();
        subt_data_size = Get_Short();
    }
    if (Rdlgth >= subt_packet_size)
        DecodeUnit();
    return 1;
}
