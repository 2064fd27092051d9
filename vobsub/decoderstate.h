#pragma once

#include "parsers/rowrange.h"
#include "vobsub/subtitledecoder.h"

#include <bitset>

/* What the decoder's files share, and what it keeps for the library's own parsers. */

constexpr int Rdbfr_size = 65536;

struct palette_entry {
    unsigned char y, v, u;
};

/** Everything that the decoder keeps between calls. Hosts see copies of some of it (see decoderview.h). */
struct decoder_state {
    // What is held of the unit coming in. Rdptr is null without a decoder, and at the start until the header is read.
    unsigned char Rdbfr[Rdbfr_size];
    int Rdlgth;
    unsigned char *Rdptr;
    bool RdLeft; ///< the high nibble of the byte at Rdptr is read already

    // The header of the unit coming in.
    int subt_packet_size;
    int subt_data_size;

    palette_entry sub_pal[16];
    subtitle_canvas canvas;
    int width; ///< of the canvas
    int height;
    std::bitset<SUBTITLE_MAX_SIDE> touched_rows; ///< those that are not as subtitle_init() made them

    // The picture being written: its area on the canvas, and where the writer is in it.
    unsigned char color[4];
    unsigned char alpha[4];
    int subt_org_x;
    int subt_org_y;
    int subt_width;
    int subt_height;
    int64_t subt_x; ///< a host's run may be of any length
    int subt_y;
    int64_t subt_add;    ///< position in each plane
    bool second_picture; ///< the top field has reached the area's last row

    // Units may be so short that clearing the canvas for each would take minutes. Between Begin_Walk() and End_Walk() no
    // host sees the canvas, and it is enough to clear the rows that were written.
    bool is_walking;
    bool are_rows_known;
    std::bitset<SUBTITLE_MAX_SIDE> written_rows;
};

extern decoder_state decoder;

/** Goes on at the next byte when half of the one at Rdptr is read. */
void Skip_Half_Read();

/** As Init_RleOutput(), without showing hosts where the picture is now; the next ones likewise. */
void Begin_Picture(int x, int y, int width, int height, unsigned int alpha_word, unsigned int colour_word);
void Write_Run(unsigned int code);

/** Goes to the start of a line of the picture, its first or second. */
void Begin_Field(int line);

/** Leaves the rest of the line as it is. */
void End_Line();

int Canvas_Size();

void Free_Canvas(const subtitle_canvas &canvas);

/** Whether subtitle_init() was called, and not subtitle_release() since. */
bool subtitle_is_set_up();

/** From the first touched row to the last. */
RowRange Touched_Rows();

/** From the first row with a visible pixel to the last. */
RowRange Visible_Rows();

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
    decoder_state state;
};
