#pragma once

#include "parsers/rowrange.h"
#include "vobsub/subtitledecoder.h"

#include <bitset>

/* Internal interface of the decoder, for its own files and for the library's parsers. */

constexpr int Rdbfr_size = 65536;

struct palette_entry {
    unsigned char y, v, u;
};

/** Everything that the decoder keeps between calls. Hosts see copies of some of it (see decoderview.h). */
struct decoder_state {
    // Bytes of the incoming unit. Rdptr is null without a decoder, and equals Rdbfr until the unit's header is read.
    unsigned char Rdbfr[Rdbfr_size];
    int Rdlgth;
    unsigned char *Rdptr;
    bool RdLeft; ///< the high nibble of the byte at Rdptr has been read

    // The header of the incoming unit.
    int subt_packet_size;
    int subt_data_size;

    palette_entry sub_pal[16];
    subtitle_canvas canvas;
    int width; ///< of the canvas
    int height;
    std::bitset<SUBTITLE_MAX_SIDE> touched_rows; ///< rows written since subtitle_init()

    // The picture being written: its area on the canvas, and the write position in that.
    unsigned char color[4];
    unsigned char alpha[4];
    int subt_org_x;
    int subt_org_y;
    int subt_width;
    int subt_height;
    int64_t subt_x; ///< 64 bits, as hosts may write runs of any length
    int subt_y;
    int64_t subt_add;    ///< position in each plane
    bool second_picture; ///< the next line of the field lies below the area

    // A stream of tiny units would take minutes if each cleared the whole canvas. Between Begin_Walk() and End_Walk()
    // no host code runs, so after the first clear it is enough to clear the rows written since.
    bool is_walking;
    bool are_rows_known;
    std::bitset<SUBTITLE_MAX_SIDE> written_rows;
};

extern decoder_state decoder;

/** Moves to the next byte if half of the one at Rdptr has been read. */
void Skip_Half_Read();

/** As Init_RleOutput() and Rle_Output(), but without publishing the picture to hosts. */
void Begin_Picture(int x, int y, int width, int height, unsigned int alpha_word, unsigned int colour_word);
void Write_Run(unsigned int code);

/** Moves to the start of a field. @param line  its first line: 0 for the top field, 1 for the bottom field */
void Begin_Field(int line);

/** Moves to the start of the field's next line; the rest of this one stays as it is. */
void End_Line();

int Canvas_Size();

void Free_Canvas(const subtitle_canvas &canvas);

/** Whether subtitle_init() was called and subtitle_release() was not called since. */
bool subtitle_is_set_up();

/** The rows from the first to the last of touched_rows. */
RowRange Touched_Rows();

/** The rows from the first to the last with a visible pixel. */
RowRange Visible_Rows();

/** Makes the picture's area empty, so that nothing is written until the next picture begins. */
void Clear_Area();

/** Call these before and after decoding many units, so that not every unit clears the whole canvas. */
void Begin_Walk();
void End_Walk();

/** Drops the bytes of an incomplete unit. The picture stays. */
void subtitle_drop_input();

/** The saved state of a decoder. Owns the saved canvas until Restore(). The settings of hosts are not saved. */
class saved_decoder
{
public:
    /** Moves the decoder's state here; the decoder is then as after subtitle_release(). */
    saved_decoder();
    ~saved_decoder();
    saved_decoder(const saved_decoder &) = delete;
    saved_decoder &operator=(const saved_decoder &) = delete;

    /** Releases the decoder and moves the saved state back into it. */
    void Restore();

private:
    decoder_state state;
};
