#include "frames/inkrows.h"

#include "render/textink.h"

#include <algorithm>
#include <cstddef>

namespace
{

constexpr int WordBits = 64;

} // namespace

InkRows::InkRows(const ShownSubtitle &shown, const Orientation &orientation) : m_ink(shown.ink)
{
    m_ink.nTop += shown.nOffset;
    if (!orientation.IsUpright() && !IsEmpty())
        Turn(orientation);
    m_listNone.assign(m_ink.nWords + 1, 0);
}

void InkRows::Turn(const Orientation &orientation)
{
    // Words may extend beyond the frame; no bit is set there.
    int top = m_ink.nTop;
    int left = m_ink.nLeft;
    int bottom = Bottom();
    int right = m_ink.nLeft + WordBits * m_ink.nWords - 1;
    orientation.ToFrame(top, left);
    orientation.ToFrame(bottom, right);
    InkBits turned = {};
    turned.nTop = std::max(0, std::min(top, bottom));
    turned.nRows = std::max(top, bottom) - turned.nTop + 1;
    turned.nLeft = std::max(0, std::min(left, right)) / WordBits * WordBits;
    turned.nWords = (std::max(left, right) - turned.nLeft) / WordBits + 1;
    const std::size_t rowWords = turned.nWords + 1;
    m_listText.assign(rowWords * turned.nRows, 0);
    m_listShown.assign(rowWords * turned.nRows, 0);
    ForPixels(m_ink, [&](int row, int column, bool isText) {
        orientation.ToFrame(row, column);
        const int bit = column - turned.nLeft;
        const std::size_t word = rowWords * (row - turned.nTop) + bit / WordBits;
        m_listShown[word] |= std::uint64_t{1} << bit % WordBits;
        m_listText[word] |= std::uint64_t{isText} << bit % WordBits;
    });
    turned.pText = m_listText.data();
    turned.pShown = m_listShown.data();
    m_ink = turned;
}

void InkRows::FindSamples(int pixels, BlockList<InkSamples> &blocks) const
{
    const std::uint64_t ofBlock = ~std::uint64_t{0} >> (WordBits - pixels);
    blocks.Reset((WordBits * static_cast<std::size_t>(Words()) / pixels + 1) * m_ink.nRows);
    InkSamples *end = blocks.End();
    for (int row = Top(); row <= Bottom(); ++row) {
        const Row bits = At(row);
        for (int column = 0; column < WordBits * Words(); column += pixels) {
            const std::uint64_t shown = BitsFrom(bits.pShown, column) & ofBlock;
            if (shown == 0)
                continue;
            const std::uint64_t text = BitsFrom(bits.pText, column) & ofBlock;
            *end++ = {row, Left() + column, text, shown};
        }
    }
    blocks.SetEnd(end);
}
