#pragma once

#include "frames/chromasite.h"
#include "frames/pixelformat.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

/** How the samples of a frame lie in its planes. */
struct FrameLayout {
    PixelFormat format;
    int nWidth, nHeight;
    ChromaAxis columns, rows;                   ///< of chroma
    std::array<std::ptrdiff_t, 4> listRowBytes; ///< bytes of each plane's rows without padding
};

/** A plane of a frame. */
struct PlaneTarget {
    std::uint8_t *pData; ///< its top row
    std::ptrdiff_t nLinesize;
    std::ptrdiff_t nRowBytes; ///< without padding

    std::uint8_t *Row(int row) const { return pData + row * nLinesize; }
};
using FramePlanes = std::array<PlaneTarget, 4>;

/** Reads a value from an address that need not be aligned: rows of hosts' frames may begin anywhere. */
template <typename Value>
inline Value Read(const std::uint8_t *from)
{
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/**
 * Copies the frame's outermost pixels of a row to the entries beyond its edges.
 * @param first  column of row[0], -1 or more
 */
template <typename Number>
void ExtendSides(std::vector<Number> &row, int first, int width)
{
    if (first < 0)
        row[0] = row[1];
    const std::size_t inFrame = width - first;
    for (std::size_t i = inFrame; i < row.size(); ++i)
        row[i] = row[inFrame - 1];
}

/**
 * Neighbouring samples (or bytes) in a row of a plane, with the index of their data in the lists that go with the span.
 */
struct Span {
    int nRow;
    int nFirst;
    int nCount;
    std::size_t nAt; ///< index of the first one's data
};

/**
 * Calls @p call(first, end) for each run of touched places among @p count. Runs that are at most @p gap places apart
 * are merged.
 */
template <typename IsTouched, typename Call>
void ForRuns(int count, int gap, IsTouched isTouched, Call call)
{
    int first = -1;
    int end = 0;
    for (int i = 0; i < count; ++i) {
        if (!isTouched(i))
            continue;
        if (first >= 0 && i - end > gap) {
            call(first, end);
            first = -1;
        }
        if (first < 0)
            first = i;
        end = i + 1;
    }
    if (first >= 0)
        call(first, end);
}
