#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

/** A queue between two threads: Push() waits while it is full, Pop() while it is empty. Every call is thread-safe. */
template <typename T>
class BoundedQueue
{
public:
    explicit BoundedQueue(size_t nCapacity) : m_nCapacity(nCapacity) {}

    /** @return false, dropping the item, once the queue is closed. */
    bool Push(T item)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_bClosed || m_listItems.size() < m_nCapacity; });
        if (m_bClosed)
            return false;
        m_listItems.push_back(std::move(item));
        m_changed.notify_all();
        return true;
    }

    /** @return nullopt once the queue is closed and empty. */
    std::optional<T> Pop()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_bClosed || !m_listItems.empty(); });
        if (m_listItems.empty())
            return std::nullopt;
        std::optional<T> item(std::move(m_listItems.front()));
        m_listItems.pop_front();
        m_changed.notify_all();
        return item;
    }

    /** Refuses further items; those in the queue can still be taken. */
    void Close()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_bClosed = true;
        m_changed.notify_all();
    }

private:
    const size_t m_nCapacity;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::deque<T> m_listItems;
    bool m_bClosed = false;
};
