#pragma once

#include "console.h"
#include "subtitlerenderer.h"

/** Frames by what was due at them. */
class FrameCounts
{
public:
    void Add(Due due);
    int64_t All() const { return m_nAll; }
    int64_t Shown() const { return m_nShown; }
    int64_t Unseen() const { return m_nUnseen; }

private:
    int64_t m_nAll = 0;
    int64_t m_nShown = 0;
    int64_t m_nUnseen = 0;
};

// What every way of running says at its end.

void WarnOfDamage(Console &console, const std::string &strInput, int64_t nDamaged);
/** Of an input that ends well before the time that it names itself; both in microseconds. */
void WarnOfEarlyEnd(Console &console, const std::string &strInput, int64_t nEnd, int64_t nMissing);
/** Of subtitles that show at no frame, and of pictures that cannot be seen. */
void WarnOfUnseen(Console &console, const std::string &strSubtitles, const FrameCounts &counts);
void ReportFrames(Console &console, const std::string &strOutput, const std::string &strSubtitles,
                  const FrameCounts &counts);
