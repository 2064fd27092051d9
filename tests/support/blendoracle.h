#pragma once

#include <cstddef>
#include <cstdint>

/** The input of a blend, with the names of the formulas. */
struct BlendInput {
    const std::uint8_t *image; ///< 4 bytes a pixel, rows of W pixels
    int x, y, w, h;            ///< the part of the image to show
    int W, H;                  ///< frame size
    int A;                     ///< opacity
    int offset;                ///< frame row of the image's row 0
};

/** Calls @p call(row, column, source, k) for each pixel that is drawn. Row and column are the frame's. */
template <typename Call>
void ForPlainPixels(BlendInput in, Call call)
{
    const std::uint8_t k0 = in.image[0];
    const std::uint8_t k1 = in.image[1];
    const std::uint8_t k2 = in.image[2];
    if (in.x < 0) {
        in.w = in.w + in.x;
        in.x = 0;
    }
    if (in.x + in.w > in.W)
        in.w = in.W - in.x;
    if (in.y < 0) {
        in.h = in.h + in.y;
        in.y = 0;
    }
    int end = in.y + in.h;
    if (end > in.H)
        end = in.H;
    for (int r = in.y; r < end; ++r) {
        const int f = r + in.offset;
        if (f < 0 || f >= in.H)
            continue;
        const std::uint8_t *s =
            in.image + static_cast<std::ptrdiff_t>(r) * in.W * 4 + static_cast<std::ptrdiff_t>(in.x) * 4;
        for (int i = 0; i < in.w; ++i, s += 4) {
            const int a = (s[3] * in.A) / 255;
            if (a == 0)
                continue;
            if (s[0] == k0 && s[1] == k1 && s[2] == k2)
                continue;
            call(f, in.x + i, s, (in.A * a) / 255);
        }
    }
}

/** Blends pixel by pixel, literally by the formulas and with plain divisions. */
inline void BlendPlainly(std::uint8_t *frame, int linesize, const BlendInput &in)
{
    ForPlainPixels(in, [&](int row, int column, const std::uint8_t *s, int k) {
        std::uint8_t *d = frame + static_cast<std::ptrdiff_t>(row) * linesize + static_cast<std::ptrdiff_t>(column) * 3;
        const int d0 = (k * s[2] + (255 - k) * d[2]) / 255;
        const int d1 = (k * s[1] + (255 - k) * d[1]) / 255;
        const int d2 = (k * s[0] + (255 - k) * d[0]) / 255;
        d[0] = static_cast<std::uint8_t>(d0);
        d[1] = static_cast<std::uint8_t>(d1);
        d[2] = static_cast<std::uint8_t>(d2);
    });
}
