#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

/** What the user gets to read: warnings, the progress line, the last line. */
class Console
{
public:
    /** @param pNotes  where notes go: standard output, or standard error when that carries pictures. */
    Console(bool bQuiet, std::FILE *pNotes);
    ~Console();

    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    void Warn(const std::string &strFile, const std::string &strText);
    void Note(const std::string &strText);

    /**
     * Rewrites the progress line a few times a second.
     * @param nTotal  microseconds in all, 0 when unknown.
     */
    void Progress(int64_t nFrames, int64_t nDone, int64_t nTotal);

private:
    using Clock = std::chrono::steady_clock;

    void ClearLine();

    bool m_bQuiet;
    bool m_bTerminal;
    bool m_bLine = false;
    std::FILE *m_pNotes;
    Clock::time_point m_begin = Clock::now();
    Clock::time_point m_next = m_begin;
};
