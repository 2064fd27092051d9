#include "vobsub/decoderstate.h"
#include "vobsub/decoderview.h"
#include "vobsub/subtitledecoder.h"

#include <algorithm>
#include <cstring>

namespace
{

bool HasCanvas()
{
    return subtitle_is_set_up() && decoder.canvas.plane[0];
}

void GoToLine(int line)
{
    decoder.subt_y = line;
    decoder.subt_add = (static_cast<int64_t>(decoder.subt_org_y) + decoder.subt_y) * decoder.width + decoder.subt_org_x;
}

void ClearAlpha()
{
    if (decoder.are_rows_known) {
        for (int row = 0; row < decoder.height; ++row) {
            if (decoder.written_rows[row])
                memset(decoder.canvas.plane[3] + static_cast<int64_t>(row) * decoder.width, 0, decoder.width);
        }
    } else {
        memset(decoder.canvas.plane[3], 0, Canvas_Size());
    }
    decoder.written_rows.reset();
    decoder.are_rows_known = decoder.is_walking;
}

void FillRun(int64_t run, unsigned int pixel)
{
    const int row = decoder.subt_org_y + decoder.subt_y;
    decoder.written_rows[row] = decoder.touched_rows[row] = true;
    const palette_entry entry = decoder.sub_pal[decoder.color[pixel]];
    memset(decoder.canvas.plane[0] + decoder.subt_add, entry.y, run);
    memset(decoder.canvas.plane[1] + decoder.subt_add, entry.u, run);
    memset(decoder.canvas.plane[2] + decoder.subt_add, entry.v, run);
    memset(decoder.canvas.plane[3] + decoder.subt_add, decoder.alpha[pixel] * 16, run);
}

bool IsOnCanvas(int x, int y, int width, int height)
{
    return x >= 0 && y >= 0 && width > 0 && height > 0 && width <= decoder.width - x && height <= decoder.height - y;
}

} // namespace

void Begin_Picture(int x, int y, int width, int height, unsigned int alpha_word, unsigned int colour_word)
{
    if (Read_Settings().color == 0) {
        std::fill_n(decoder.sub_pal, 16, palette_entry{255, 128, 128});
        decoder.sub_pal[0].y = 0;
    }
    for (int k = 0; k < 4; ++k) {
        decoder.color[k] = colour_word >> (4 * k) & 15;
        decoder.alpha[k] = alpha_word >> (4 * k) & 15;
    }
    // The other planes keep the last picture's pixels.
    if (HasCanvas())
        ClearAlpha();
    decoder.canvas.top = decoder.height;
    decoder.canvas.bottom = 0;

    Clear_Area();
    if (IsOnCanvas(x, y, width, height)) {
        decoder.subt_org_x = x;
        decoder.subt_org_y = y;
        decoder.subt_width = width;
        decoder.subt_height = height;
    }
    GoToLine(0);
}

void Init_RleOutput(int x, int y, int width, int height, unsigned int alpha_word, unsigned int colour_word)
{
    Begin_Picture(x, y, width, height, alpha_word, colour_word);
    Publish_Picture();
}

void Begin_Walk()
{
    decoder.is_walking = true;
    decoder.are_rows_known = false;
}

void End_Walk()
{
    decoder.is_walking = decoder.are_rows_known = false;
}

void Clear_Area()
{
    decoder.subt_org_x = decoder.subt_org_y = decoder.subt_width = decoder.subt_height = 0;
    decoder.subt_x = 0;
    GoToLine(0);
}

void New_Line()
{
    // Limited to prevent overflow: a host may call this any number of times. No picture is higher than the canvas.
    GoToLine(std::min(decoder.subt_y, SUBTITLE_MAX_SIDE) + 2);
    if (decoder.subt_y >= decoder.subt_height)
        decoder.second_picture = true;
    Skip_Half_Read();
}

void Write_Run(unsigned int code)
{
    if (code == 0 || decoder.subt_y >= decoder.subt_height || !HasCanvas())
        return;
    const unsigned int pixel = code & 3;
    const int64_t run = code >> 2;
    const int64_t room = decoder.subt_width - decoder.subt_x;
    if (run < room) {
        FillRun(run, pixel);
        decoder.subt_add += run;
        decoder.subt_x += run;
    } else {
        if (room > 0)
            FillRun(room, pixel);
        New_Line();
        // Intentional: the next line starts as many pixels in as the run was too long.
        decoder.subt_x = run - room;
        decoder.subt_add += decoder.subt_x;
    }
    // Intentional: a run that ends its line counts for the line after it.
    if (decoder.alpha[pixel]) {
        decoder.canvas.top = std::min(decoder.canvas.top, decoder.subt_y);
        decoder.canvas.bottom = std::max(decoder.canvas.bottom, decoder.subt_y);
    }
}

void Rle_Output(unsigned int code)
{
    Write_Run(code);
    Publish_Picture();
}

void Begin_Field(int line)
{
    GoToLine(line);
    decoder.subt_x = 0;
}

void End_Line()
{
    New_Line();
    decoder.subt_x = 0;
}
