#include "vobsub/decoderstate.h"
#include "vobsub/subtitledecoder.h"

#include <algorithm>
#include <bitset>
#include <cstring>

palette_entry sub_pal[16];
int subt_org_y;
bool second_picture;

namespace
{

// The picture being written: its area on the canvas, and where the writer is in it.
unsigned char color[4];
unsigned char alpha[4];
int subt_org_x;
int subt_width;
int subt_height;
int64_t subt_x; // a host's run may be of any length
int subt_y;
int64_t subt_add; // position in each plane

// Units may be so short that clearing the canvas for each would take minutes. While no host comes between, it is enough
// to clear the rows that were written.
bool is_walking;
bool are_rows_known;
std::bitset<SUBTITLE_MAX_SIDE> written_rows;

bool HasCanvas()
{
    return subtitle_is_set_up() && mediadata.plane[0];
}

void GoToLine(int line)
{
    subt_y = line;
    subt_add = (static_cast<int64_t>(subt_org_y) + subt_y) * Coded_Picture_Width + subt_org_x;
}

void ClearAlpha()
{
    if (are_rows_known) {
        for (int row = 0; row < Coded_Picture_Height; ++row) {
            if (written_rows[row])
                memset(mediadata.plane[3] + static_cast<int64_t>(row) * Coded_Picture_Width, 0, Coded_Picture_Width);
        }
    } else {
        memset(mediadata.plane[3], 0, Canvas_Size());
    }
    written_rows.reset();
    are_rows_known = is_walking;
}

void FillRun(int64_t run, unsigned int pixel)
{
    written_rows[subt_org_y + subt_y] = true;
    const palette_entry entry = sub_pal[color[pixel]];
    memset(mediadata.plane[0] + subt_add, entry.y, run);
    memset(mediadata.plane[1] + subt_add, entry.u, run);
    memset(mediadata.plane[2] + subt_add, entry.v, run);
    memset(mediadata.plane[3] + subt_add, alpha[pixel] * 16, run);
}

bool IsOnCanvas(int x, int y, int width, int height)
{
    return x >= 0 && y >= 0 && width > 0 && height > 0 && width <= Coded_Picture_Width - x &&
           height <= Coded_Picture_Height - y;
}

} // namespace

void Init_RleOutput(int x, int y, int width, int height, unsigned int alpha_word, unsigned int colour_word)
{
    if (Subt_Color == 0) {
        std::fill_n(sub_pal, 16, palette_entry{255, 128, 128});
        sub_pal[0].y = 0;
    }
    for (int k = 0; k < 4; ++k) {
        color[k] = colour_word >> (4 * k) & 15;
        alpha[k] = alpha_word >> (4 * k) & 15;
    }
    // The other planes keep the last picture's pixels.
    if (HasCanvas())
        ClearAlpha();
    mediadata.top = Coded_Picture_Height;
    mediadata.bottom = 0;

    Clear_Area();
    if (IsOnCanvas(x, y, width, height)) {
        subt_org_x = x;
        subt_org_y = y;
        subt_width = width;
        subt_height = height;
    }
    GoToLine(0);
}

void Begin_Walk()
{
    is_walking = true;
    are_rows_known = false;
}

void End_Walk()
{
    is_walking = are_rows_known = false;
}

void Clear_Area()
{
    subt_org_x = subt_org_y = subt_width = subt_height = 0;
    subt_x = 0;
    GoToLine(0);
}

void New_Line()
{
    GoToLine(subt_y + 2);
    if (subt_y >= subt_height)
        second_picture = true;
    Skip_Half_Read();
}

void Rle_Output(unsigned int code)
{
    if (code == 0 || subt_y >= subt_height || !HasCanvas())
        return;
    const unsigned int pixel = code & 3;
    const int64_t run = code >> 2;
    const int64_t room = subt_width - subt_x;
    if (run < room) {
        FillRun(run, pixel);
        subt_add += run;
        subt_x += run;
    } else {
        if (room > 0)
            FillRun(room, pixel);
        New_Line();
        // The next line resumes where the run would have ended: this is meant.
        subt_x = run - room;
        subt_add += subt_x;
    }
    // A run that ended its line counts for the line that it led to: this is meant.
    if (alpha[pixel]) {
        mediadata.top = std::min(mediadata.top, subt_y);
        mediadata.bottom = std::max(mediadata.bottom, subt_y);
    }
}

void Begin_Field(int line)
{
    GoToLine(line);
    subt_x = 0;
}

void End_Line()
{
    New_Line();
    subt_x = 0;
}
