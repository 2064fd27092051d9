#include "render/textink.h"

#include <algorithm>

namespace
{

void OrInto(std::uint64_t *to, const std::uint64_t *words, int count)
{
    for (int word = 0; word < count; ++word)
        to[word] |= words[word];
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
    // A row of the text with a zero word at either end.
    std::vector<std::uint64_t> padded(text.nWords + 2);
    std::vector<std::uint64_t> three(text.nWords);
    std::vector<std::uint64_t> five(text.nWords);
    for (int row = 0; row < text.nRows; ++row) {
        std::copy_n(text.Row(row), text.nWords, padded.begin() + 1);
        for (int word = 0; word < text.nWords; ++word) {
            const std::uint64_t before = padded[word];
            const std::uint64_t here = padded[word + 1];
            const std::uint64_t after = padded[word + 2];
            three[word] = here | here << 1 | before >> 63 | here >> 1 | after << 63;
            five[word] = three[word] | here << 2 | before >> 62 | here >> 2 | after << 62;
        }
        // The disc is 3 pixels wide in its first and last row and 5 between.
        for (int dy = -2; dy <= 2; ++dy) {
            if (row + dy >= 0 && row + dy < outline.nRows)
                OrInto(outline.Row(row + dy), dy == -2 || dy == 2 ? three.data() : five.data(), text.nWords);
        }
    }
}
