#pragma once

#include "commandline/console.h"
#include "commandline/options.h"
#include "media/orientation.h"
#include "subtitles/subtitlerenderer.h"

/** Counts frames by what was due at them. */
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

/** Counts frames by what was due, for each subtitle and for all together. */
class BurnCounts
{
public:
    explicit BurnCounts(const std::vector<Subtitle> &listSubtitles);

    /** @param listDues  what was due at a frame, by subtitle. */
    void Add(const std::vector<Due> &listDues);

    const FrameCounts &OfAny() const { return m_any; }
    const std::vector<FrameCounts> &OfEach() const { return m_listEach; }

    /** The name of a subtitle in messages: the file, with the track if the file is given more than once. */
    const std::string &NameOf(size_t nSubtitle) const { return m_listNames[nSubtitle]; }

    /** Says whether a single frame has a subtitle. */
    std::string TextOf(const std::vector<Due> &listDues) const;

private:
    FrameCounts m_any;
    std::vector<FrameCounts> m_listEach;
    std::vector<std::string> m_listNames;
};

// Messages at the end of every mode.

void WarnOfDamage(Console &console, const std::string &strInput, int64_t nDamaged);
/** Warns if nMissing, as of MediaInput::MissingTime(), is over a second. Both times in microseconds. */
void WarnOfEarlyEnd(Console &console, const std::string &strInput, int64_t nEnd, int64_t nMissing);
/** Warns of a display matrix that frames cannot be turned by, for an output that cannot hold it. */
void WarnOfLostMatrix(Console &console, const std::string &strOutput, const Orientation &orientation);
/** Warns of subtitles that no frame shows, and of invisible pictures. */
void WarnOfUnseen(Console &console, const BurnCounts &counts);
void ReportFrames(Console &console, const std::string &strOutput, const BurnCounts &counts);
