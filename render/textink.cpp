#include "render/textink.h"

namespace
{

/** The bits of a word and of its neighbours to the left and right. */
struct Neighbourhood {
    std::uint64_t nBefore;
    std::uint64_t nHere;
    std::uint64_t nAfter;

    /** The word as seen when the row is moved by @p distance columns, 1 or 2, to the right. */
    std::uint64_t MovedRight(int distance) const { return nHere << distance | nBefore >> (64 - distance); }
    std::uint64_t MovedLeft(int distance) const { return nHere >> distance | nAfter << (64 - distance); }
};

void AddWords(BitMask &mask, int row, int word, std::uint64_t bits)
{
    if (row >= 0 && row < mask.nRows)
        mask.Row(row)[word] |= bits;
}

} // namespace

BitMask MakeMask(int left, int top, int columns, int rows)
{
    BitMask mask;
    mask.nLeft = left;
    mask.nTop = top;
    mask.nColumns = columns;
    mask.nWords = (columns + 63) / 64;
    mask.nRows = rows;
    mask.listWords.assign(static_cast<std::size_t>(mask.nWords) * rows, 0);
    return mask;
}

void AddMask(BitMask &to, const BitMask &mask, int dx, int dy)
{
    const int left = mask.nLeft + dx - to.nLeft;
    const int firstWord = left / 64;
    const int shift = left % 64;
    for (int row = 0; row < mask.nRows; ++row) {
        const int toRow = mask.nTop + dy + row - to.nTop;
        if (toRow < 0 || toRow >= to.nRows)
            continue;
        const std::uint64_t *from = mask.Row(row);
        std::uint64_t *words = to.Row(toRow) + firstWord;
        for (int word = 0; word < mask.nWords; ++word) {
            if (!from[word])
                continue;
            words[word] |= from[word] << shift;
            if (shift && from[word] >> (64 - shift))
                words[word + 1] |= from[word] >> (64 - shift);
        }
    }
}

void AddDisc(BitMask &outline, const BitMask &text)
{
    for (int row = 0; row < text.nRows; ++row) {
        const std::uint64_t *words = text.Row(row);
        for (int word = 0; word < text.nWords; ++word) {
            const Neighbourhood bits = {word > 0 ? words[word - 1] : 0, words[word],
                                        word + 1 < text.nWords ? words[word + 1] : 0};
            // The disc is 3 pixels wide in its first and last row and 5 between.
            const std::uint64_t three = bits.MovedRight(1) | bits.nHere | bits.MovedLeft(1);
            const std::uint64_t five = bits.MovedRight(2) | three | bits.MovedLeft(2);
            AddWords(outline, row - 2, word, three);
            AddWords(outline, row - 1, word, five);
            AddWords(outline, row, word, five);
            AddWords(outline, row + 1, word, five);
            AddWords(outline, row + 2, word, three);
        }
    }
}
