#pragma once

#include <cstddef>
#include <memory>

/** A list that is made anew again and again. Its room is not initialised, which would cost as much as filling it. */
template <typename Block>
class BlockList
{
public:
    /** Empties it, with room for so many blocks. */
    void Reset(std::size_t room)
    {
        m_nCount = 0;
        if (m_nRoom < room) {
            m_nRoom = 0;
            m_pBlocks.reset(new Block[room]);
            m_nRoom = room;
        }
    }

    /** Where the next block goes, for a loop that fills in many. There must be room. */
    Block *End() { return m_pBlocks.get() + m_nCount; }
    /** After the last block that was filled in. */
    void SetEnd(const Block *end) { m_nCount = end - m_pBlocks.get(); }

    const Block *Data() const { return m_pBlocks.get(); }
    std::size_t Size() const { return m_nCount; }

private:
    std::unique_ptr<Block[]> m_pBlocks;
    std::size_t m_nCount = 0;
    std::size_t m_nRoom = 0;
};
