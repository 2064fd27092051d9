#include "vobsub/subtitledecoder.h"

#include "vobsub/decoderstate.h"
#include "vobsub/decoderview.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

decoder_state decoder;

namespace
{

constexpr int HeaderSize = 4;    // of a unit: its size and the offset of its control area, 2 bytes each
constexpr int PlanePadding = 64; // scalers read whole vectors

/** The values set by a unit's commands; 0 without such a command. */
struct unit_control {
    int x1, x2, y1, y2;
    int off1, off2;
    unsigned int colour_word, alpha_word;
};

unsigned char *AllocatePlanes(int count, int padding)
{
    return static_cast<unsigned char *>(malloc(static_cast<size_t>(count) * Canvas_Size() + padding));
}

/** False if memory runs out; no plane is left allocated then. */
bool AllocateCanvas()
{
    decoder.canvas.plane[0] = AllocatePlanes(3, PlanePadding);
    decoder.canvas.plane[3] = AllocatePlanes(1, PlanePadding);
    for (unsigned char *&plane : decoder.canvas.out)
        plane = AllocatePlanes(1, 0);
    if (decoder.canvas.plane[0] && decoder.canvas.plane[3] && decoder.canvas.out[0] && decoder.canvas.out[1] &&
        decoder.canvas.out[2]) {
        decoder.canvas.plane[1] = decoder.canvas.plane[0] + Canvas_Size();
        decoder.canvas.plane[2] = decoder.canvas.plane[1] + Canvas_Size();
        memset(decoder.canvas.plane[0], 0, Canvas_Size());
        memset(decoder.canvas.plane[1], 128, 2 * Canvas_Size() + PlanePadding);
        memset(decoder.canvas.plane[3], 0, Canvas_Size() + PlanePadding);
        return true;
    }
    Free_Canvas(decoder.canvas);
    return false;
}

/** Refuses an invalid unit: no pixel is visible, and the next bytes begin a new unit. */
void Refuse()
{
    subtitle_drop_input();
    Begin_Picture(0, 0, 0, 0, 0, 0);
}

int ReadThreeNibbles()
{
    const int high = Get_HalfByte();
    const int middle = Get_HalfByte();
    return high * 256 + middle * 16 + Get_HalfByte();
}

/** Skips bytes that are not commands, and the forced display 0x00. */
void ReadCommand(int command, int time, unit_control &control)
{
    switch (command) {
    case 0x01:
        decoder.canvas.start = time;
        break;
    case 0x02:
        decoder.canvas.stop = time;
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
 * A sequence consists of its delay, the offset of the next one, commands and 0xFF. Intentional: the time is computed
 * from the offset, not from the delay, and the walk ends when two delays in a row are equal.
 */
unit_control WalkControl()
{
    const unsigned char *const end = decoder.Rdbfr + decoder.Rdlgth;
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
            } while (decoder.Rdptr < end && command != 0xFF);
        }
        const int word = Get_Short();
        if (decoder.Rdptr >= end || word == previous)
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
    Write_Run(code);
}

/** Intentional: both fields stop 4 bytes before the control area, so the last pixel data is never shown. */
void DecodeFields(const unit_control &control)
{
    unsigned char *const base = decoder.Rdbfr + HeaderSize;
    const unsigned char *const end = decoder.Rdbfr + decoder.subt_data_size - 4;

    decoder.second_picture = false;
    decoder.Rdptr = base + control.off1;
    while (decoder.Rdptr < end && !decoder.second_picture)
        DecodeCode();

    // Intentional: if the top field stopped in the middle of a byte, the bottom field starts with a low nibble.
    Begin_Field(1);
    decoder.Rdptr = base + control.off2;
    while (decoder.Rdptr < end)
        DecodeCode();
}

bool IsInUnit(int offset)
{
    return offset + HeaderSize <= decoder.subt_packet_size;
}

void DecodeUnit()
{
    if (decoder.subt_data_size < HeaderSize || decoder.subt_data_size >= decoder.subt_packet_size) {
        Refuse();
        return;
    }
    decoder.RdLeft = false;
    decoder.Rdptr = decoder.Rdbfr + decoder.subt_data_size;
    const unit_control control = WalkControl();
    if (!IsInUnit(control.off1) || !IsInUnit(control.off2)) {
        Refuse();
        return;
    }
    Begin_Picture(control.x1, control.y1, control.x2 - control.x1 + 1, control.y2 - control.y1 + 1, control.alpha_word,
                  control.colour_word);
    DecodeFields(control);
    decoder.canvas.top += decoder.subt_org_y;
    decoder.canvas.bottom = std::min(decoder.canvas.bottom + decoder.subt_org_y, decoder.height - 1);

    // Intentional: the bytes held beyond the unit are taken from where its pixel data ended, not from its own end.
    decoder.Rdlgth -= decoder.subt_packet_size;
    memmove(decoder.Rdbfr, decoder.Rdptr, decoder.Rdlgth);
    decoder.Rdptr = decoder.Rdbfr;
}

} // namespace

int Canvas_Size()
{
    return decoder.width * decoder.height;
}

RowRange Touched_Rows()
{
    int first = 0;
    while (first < decoder.height && !decoder.touched_rows[first])
        ++first;
    int end = decoder.height;
    while (end > first && !decoder.touched_rows[end - 1])
        --end;
    return {first, end - first};
}

RowRange Visible_Rows()
{
    const auto isVisible = [](int row) {
        const unsigned char *alpha = decoder.canvas.plane[3] + static_cast<int64_t>(row) * decoder.width;
        return alpha[0] != 0 || memcmp(alpha, alpha + 1, decoder.width - 1) != 0;
    };
    RowRange rows = Touched_Rows();
    for (; rows.nCount > 0 && !isVisible(rows.nFirst); --rows.nCount)
        ++rows.nFirst;
    while (rows.nCount > 0 && !isVisible(rows.End() - 1))
        --rows.nCount;
    return rows;
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
    return decoder.Rdptr != nullptr;
}

void subtitle_drop_input()
{
    if (!decoder.Rdptr)
        return;
    decoder.Rdptr = decoder.Rdbfr;
    decoder.RdLeft = false;
    decoder.Rdlgth = decoder.subt_packet_size = decoder.subt_data_size = 0;
}

int subtitle_init(const unsigned int *palette, int width, int height)
{
    for (int k = 0; k < 16; ++k) {
        const unsigned int word = palette[k];
        // Colours are not converted: hosts make their palettes for this.
        decoder.sub_pal[k] = {static_cast<unsigned char>(word), static_cast<unsigned char>(word >> 16),
                              static_cast<unsigned char>(word >> 8)};
    }
    subtitle_release();

    Reset_Settings();
    const bool isPossible = width >= 1 && height >= 1 && width <= SUBTITLE_MAX_SIDE && height <= SUBTITLE_MAX_SIDE;
    decoder.width = isPossible ? width : 0;
    decoder.height = isPossible ? height : 0;
    if (!isPossible || !AllocateCanvas()) {
        decoder.canvas.plane[0] = decoder.canvas.plane[1] = decoder.canvas.plane[2] = decoder.canvas.plane[3] = nullptr;
        decoder.canvas.out[0] = decoder.canvas.out[1] = decoder.canvas.out[2] = nullptr;
        decoder.width = decoder.height = 0;
    }
    decoder.touched_rows.reset();
    decoder.Rdptr = decoder.Rdbfr;
    subtitle_drop_input();
    Clear_Area();
    Publish_Canvas();
    return 1;
}

void subtitle_release()
{
    if (!decoder.Rdptr)
        return;
    Free_Canvas(decoder.canvas);
    decoder.Rdptr = nullptr;
}

int subtitle_decode(const unsigned char *data, int len)
{
    if (!decoder.Rdptr || len < 0)
        return 1;
    if (len > Rdbfr_size - decoder.Rdlgth) {
        Refuse();
        Publish_Picture();
        return 1;
    }
    if (len > 0)
        memcpy(decoder.Rdbfr + decoder.Rdlgth, data, len);
    decoder.Rdlgth += len;
    if (decoder.Rdptr == decoder.Rdbfr) {
        if (decoder.Rdlgth < HeaderSize)
            return 1;
        decoder.subt_packet_size = Get_Short();
        decoder.subt_data_size = Get_Short();
    }
    if (decoder.Rdlgth >= decoder.subt_packet_size) {
        DecodeUnit();
        Publish_Picture();
    }
    return 1;
}
