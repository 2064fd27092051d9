#pragma once

#include "vobsub/subtitledecoder.h"

#include <cstddef>
#include <vector>

/* What the decoder's files share, and what it keeps for the library's own parsers. */

constexpr int Rdbfr_size = 65536;

// What is held of the unit coming in. Rdptr is null without a decoder, and at the start until the header is read.
extern unsigned char Rdbfr[Rdbfr_size];
extern int Rdlgth;
extern unsigned char *Rdptr;
extern bool RdLeft; ///< the high nibble of the byte at Rdptr is read already

// The header of the unit coming in.
extern int subt_packet_size;
extern int subt_data_size;

struct palette_entry {
    unsigned char y, v, u;
};
extern palette_entry sub_pal[16];
extern int subt_org_y;      ///< the picture's first row on the canvas
extern bool second_picture; ///< the top field has reached the area's last row

/** Goes on at the next byte when half of the one at Rdptr is read. */
void Skip_Half_Read();

/** Goes to the start of a line of the picture, its first or second. */
void Begin_Field(int line);

/** Leaves the rest of the line as it is. */
void End_Line();

int Canvas_Size();

void Free_Canvas(const subtitle_canvas &canvas);

/** Whether subtitle_init() was called, and not subtitle_release() since. */
bool subtitle_is_set_up();

/** Takes the area of the picture being written away, so that nothing is written until the next one begins. */
void Clear_Area();

/** Encloses the decoding of many units at once. */
void Begin_Walk();
void End_Walk();

/** Forgets what is held of a unit that is not complete. The picture stays. */
void subtitle_drop_input();

/** A decoder put aside with its canvas, which is freed with the record. What a host sets is not part of it. */
class saved_decoder
{
public:
    /** Takes the decoder's state away, which is then as after subtitle_release(). */
    saved_decoder();
    ~saved_decoder();
    saved_decoder(const saved_decoder &) = delete;
    saved_decoder &operator=(const saved_decoder &) = delete;

    /** Puts the state back in the place of the decoder's, which is released. */
    void Restore();

private:
    bool is_set_up;
    subtitle_canvas canvas;
    int width;
    int height;
    palette_entry palette[16];
    std::vector<unsigned char> held;
    std::ptrdiff_t position;
    bool is_half_read;
    int packet_size;
    int data_size;
};
