#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>

/** Prints warnings and the progress line to standard error, and notes to the stream given. */
class Console
{
public:
    /**
     * @param bQuiet  suppresses notes and progress, not warnings.
     * @param pNotes  where notes are printed: standard output, or standard error if standard output carries pictures.
     *                Not owned.
     */
    Console(bool bQuiet, std::FILE *pNotes);
    ~Console();

    Console(const Console &) = delete;
    Console &operator=(const Console &) = delete;

    void Warn(const std::string &strFile, const std::string &strText);
    void Note(const std::string &strText);

    /**
     * Rewrites the progress line, at most four times a second and only on a terminal.
     * @param nDone   microseconds of video done.
     * @param nTotal  microseconds in all, 0 if unknown.
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
