#pragma once

#include "frames/orientation.h"
#include "frames/samplekernel.h"
#include "render/blocklist.h"
#include "render/shownsubtitle.h"

#include <cstdint>
#include <vector>

/** The pixels of text in a frame as it is stored, i.e. after its orientation; one bit per pixel. */
class InkRows
{
public:
    /** The words of a row, as in InkBits. */
    struct Row {
        const std::uint64_t *pText;
        const std::uint64_t *pShown;
    };

    /** @param shown  its pixels must outlive this */
    InkRows(const ShownSubtitle &shown, const Orientation &orientation);

    bool IsEmpty() const { return m_ink.nRows == 0; }
    int Top() const { return m_ink.nTop; }
    int Bottom() const { return m_ink.nTop + m_ink.nRows - 1; }
    int Left() const { return m_ink.nLeft; }
    int Words() const { return m_ink.nWords; }
    /** For any row of the frame; zeros if it has no ink. */
    Row At(int row) const
    {
        if (row < Top() || row > Bottom())
            return {m_listNone.data(), m_listNone.data()};
        return {m_ink.Text(row), m_ink.Shown(row)};
    }

    /** Divides the rows into blocks of @p pixels (at most 64) and lists those in which any pixel is shown. */
    void FindSamples(int pixels, BlockList<InkSamples> &blocks) const;

private:
    void Turn(const Orientation &orientation);

    InkBits m_ink;
    std::vector<std::uint64_t> m_listText, m_listShown; ///< copies, if the frame is not upright
    std::vector<std::uint64_t> m_listNone;              ///< a row without ink
};
