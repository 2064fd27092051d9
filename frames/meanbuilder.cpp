#include "frames/meanbuilder.h"

#include "render/textink.h"

#include <algorithm>

namespace
{

/** Columns of pixels that a block's samples span. */
constexpr int BlockColumns = 2 * static_cast<int>(MeanSamples);

} // namespace

MeanBuilder::MeanBuilder(const InkRows &ink, const FrameLayout &layout, const SampleKernel &kernel) :
    m_ink(ink),
    m_layout(layout),
    m_kernel(kernel),
    m_bLower(layout.format.components[1].nRowsLog2 > 0),
    m_columnWeights(layout.columns.Weights())
{
}

void MeanBuilder::Build(BlockList<InkMeans> &blocks) const
{
    int first = m_ink.Top();
    int last = m_ink.Bottom();
    if (m_bLower)
        m_layout.rows.ToSamples(first, last);
    const std::size_t columns = 64 / BlockColumns * static_cast<std::size_t>(m_ink.Words()) + 2;
    blocks.Reset(columns * std::max(0, last - first + 1));
    InkMeans *end = blocks.End();
    for (int row = first; row <= last; ++row)
        end = FindRow(row, end);
    blocks.SetEnd(end);
}

/** Writes the blocks of a row from @p next on. Returns the end of them. */
InkMeans *MeanBuilder::FindRow(int row, InkMeans *next) const
{
    const Taps taps = m_bLower ? m_layout.rows.At(row) : Taps{1, {row}, {Taps::Whole}};
    std::array<InkRows::Row, MeanRows> rows = {};
    MeanBits bits = {};
    bits.nRows = taps.nCount;
    for (int i = 0; i < taps.nCount; ++i) {
        rows[i] = m_ink.At(taps.positions[i]);
        for (std::size_t tap = 0; tap < m_columnWeights.size(); ++tap)
            bits.weights[i][tap] = static_cast<std::uint8_t>(taps.weights[i] * m_columnWeights[tap]);
    }
    // Ink in the first or last column of the words may also count in samples outside them.
    const int end = std::min(m_ink.Left() + 64 * m_ink.Words() + BlockColumns, m_layout.nWidth);
    for (int column = std::max(0, m_ink.Left() - BlockColumns); column < end; column += BlockColumns) {
        const int from = column - 1 - m_ink.Left();
        const bool isInside = from >= 0 && from < 64 * m_ink.Words() && column + BlockColumns < m_layout.nWidth;
        const auto bitsOf = [&](const std::uint64_t *row) {
            return isInside ? BitsFrom(row, from) : BitsAtEnd(column, row);
        };
        std::uint64_t any = 0;
        for (int i = 0; i < taps.nCount; ++i) {
            bits.shown[i] = bitsOf(rows[i].pShown);
            any |= bits.shown[i];
        }
        if ((any & MeanBits::OfBlock) == 0)
            continue;
        for (int i = 0; i < taps.nCount; ++i)
            bits.text[i] = bitsOf(rows[i].pText);
        next->nRow = row;
        next->nFirst = column / 2;
        m_kernel.Weigh(bits, *next++);
    }
    return next;
}

/** Like BitsFrom() for the pixel before @p column, but also valid where there is no such pixel or word. */
std::uint64_t MeanBuilder::BitsAtEnd(int column, const std::uint64_t *row) const
{
    const int from = column - 1 - m_ink.Left();
    std::uint64_t bits = 0;
    if (from < 0)
        bits = row[0] << -from;
    else if (from < 64 * m_ink.Words())
        bits = BitsFrom(row, from);
    // Beyond the frame's edges, the pixel at the edge is repeated.
    if (column == 0)
        bits |= bits >> 1 & 1;
    const int beyond = m_layout.nWidth - column + 1;
    if (beyond <= BlockColumns + 1)
        bits |= (bits >> (beyond - 1) & 1) * 3 << beyond;
    return bits;
}
