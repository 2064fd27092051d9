#pragma once

#include "frames/orientation.h"
#include "frames/samplekernel.h"
#include "render/blocklist.h"
#include "render/shownsubtitle.h"

#include <cstdint>
#include <vector>

/** Text's pixels in the rows and columns of a frame, a bit for each. */
class InkRows
{
public:
    /** As in InkBits. */
    struct Row {
        const std::uint64_t *pText;
        const std::uint64_t *pShown;
    };

    /** @param shown  must stay valid as long as this */
    InkRows(const ShownSubtitle &shown, const Orientation &orientation);

    bool IsEmpty() const { return m_ink.nRows == 0; }
    int Top() const { return m_ink.nTop; }
    int Bottom() const { return m_ink.nTop + m_ink.nRows - 1; }
    int Left() const { return m_ink.nLeft; }
    int Words() const { return m_ink.nWords; }
    /** Of any row of the frame. */
    Row At(int row) const
    {
        if (row < Top() || row > Bottom())
            return {m_listNone.data(), m_listNone.data()};
        return {m_ink.Text(row), m_ink.Shown(row)};
    }

    /** Makes blocks of so many pixels, at most 64, of those that are shown. */
    void FindSamples(int pixels, BlockList<InkSamples> &blocks) const;

private:
    void Turn(const Orientation &orientation);

    InkBits m_ink;
    std::vector<std::uint64_t> m_listText, m_listShown; ///< of a picture that is turned
    std::vector<std::uint64_t> m_listNone;              ///< a row without ink
};
