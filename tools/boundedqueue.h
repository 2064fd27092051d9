#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <optional>

/** Hands items from one thread to another and makes the faster one wait. */
template <typename T>
class BoundedQueue
{
public:
    explicit BoundedQueue(size_t nCapacity) : m_nCapacity(nCapacity) {}

    /** @return false when nobody takes items any more. */
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

    /** Empty once the queue is closed and all was taken. */
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

    /** No item comes after those that are in it. */
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
