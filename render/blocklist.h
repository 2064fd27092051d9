#pragma once

#include <cstddef>
#include <memory>

/** A list that is refilled often. Its memory is not initialised, which would cost as much as filling it. */
template <typename Block>
class BlockList
{
public:
    /** Empties the list and makes room for @p room blocks. */
    void Reset(std::size_t room)
    {
        m_nCount = 0;
        if (m_nRoom < room) {
            m_nRoom = 0;
            m_pBlocks.reset(new Block[room]);
            m_nRoom = room;
        }
    }

    /** Where the next block is to be written, for a loop that writes many within the room and then calls SetEnd(). */
    Block *End() { return m_pBlocks.get() + m_nCount; }
    /** @param end  after the last block that was written. */
    void SetEnd(const Block *end) { m_nCount = end - m_pBlocks.get(); }

    const Block *Data() const { return m_pBlocks.get(); }
    std::size_t Size() const { return m_nCount; }

private:
    std::unique_ptr<Block[]> m_pBlocks;
    std::size_t m_nCount = 0;
    std::size_t m_nRoom = 0;
};
