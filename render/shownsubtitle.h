#pragma once

#include "render/blendkernel.h"

#include <cstddef>
#include <cstdint>

/** Pixels in two colours as bit masks. Column nLeft is the lowest bit of a row's first word. */
struct InkBits {
    int nLeft; ///< a multiple of 64, 0 or more
    int nTop;
    int nRows;                   ///< 0 when there are none
    int nWords;                  ///< of a row, without the word of zeros that follows
    const std::uint64_t *pText;  ///< in the text's colour
    const std::uint64_t *pShown; ///< in either colour

    const std::uint64_t *Text(int row) const { return pText + At(row); }
    const std::uint64_t *Shown(int row) const { return pShown + At(row); }

private:
    std::ptrdiff_t At(int row) const { return std::ptrdiff_t{row - nTop} * (nWords + 1); }
};

/** Calls @p call(row, column, isText) for each pixel. */
template <typename Call>
inline void ForPixels(const InkBits &ink, Call call)
{
    for (int row = ink.nTop; row < ink.nTop + ink.nRows; ++row) {
        for (int word = 0; word < ink.nWords; ++word) {
            const std::uint64_t text = ink.Text(row)[word];
            for (std::uint64_t bits = ink.Shown(row)[word]; bits; bits &= bits - 1) {
                const int bit = __builtin_ctzll(bits);
                call(row, ink.nLeft + 64 * word + bit, (text >> bit & 1) != 0);
            }
        }
    }
}

/** The visible pixels of a subtitle, in rows of its image: nOffset must be added to get rows of the frame. */
struct ShownSubtitle {
    InkBits ink;                  ///< all in the frame
    InkColors inkColors;          ///< red first
    int nInkWeight;               ///< of all pixels of ink, 0 to 255
    const PictureBlock *pPicture; ///< sorted by row, all in the frame's rows; colours with red first
    std::size_t nPictureCount;
    int nUntouched;                ///< weight in a PictureBlock that means "not drawn"
    int nOffset;                   ///< added to a row to get the frame's
    int nFrameWidth, nFrameHeight; ///< 0 on a renderer that is not configured
    std::uint64_t nVersion;        ///< changes whenever anything above changes; 0 while nothing is visible
};

/** Receives the visible subtitle. */
class ShownVisitor
{
public:
    /** @param shown  valid until the call returns, with everything that it points to. */
    virtual void Visit(const ShownSubtitle &shown) = 0;

protected:
    ShownVisitor() = default;
    ShownVisitor(const ShownVisitor &) = default;
    ShownVisitor &operator=(const ShownVisitor &) = default;
    ~ShownVisitor() = default;
};
