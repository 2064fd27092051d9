#include "report.h"

#include "ffmpegptr.h"
#include "values.h"

namespace
{

std::string Count(int64_t nCount, const std::string &strWhat)
{
    return std::to_string(nCount) + " " + strWhat + (nCount == 1 ? "" : "s");
}

} // namespace

void WarnOfDamage(Console &console, const std::string &strInput, int64_t nDamaged)
{
    if (nDamaged > 0)
        console.Warn(strInput, Count(nDamaged, "frame") + " could not be decoded, or not without damage");
}

void WarnOfEarlyEnd(Console &console, const std::string &strInput, int64_t nEnd, int64_t nMissing)
{
    if (nMissing > AV_TIME_BASE)
        console.Warn(strInput, "the pictures end at " + TimeText(nEnd) + ", but it names " + TimeText(nEnd + nMissing) +
                                   " as their end; it may be cut off");
}

void FrameCounts::Add(Due due)
{
    ++m_nAll;
    m_nShown += due == Due::Shown ? 1 : 0;
    m_nUnseen += due == Due::Unseen ? 1 : 0;
}

void WarnOfUnseen(Console &console, const std::string &strSubtitles, const FrameCounts &counts)
{
    if (counts.Unseen() > 0)
        console.Warn(strSubtitles, "at " + Count(counts.Unseen(), "frame") +
                                       " a picture was due whose colours have no blue; --exact shows nothing of it");
    else if (counts.Shown() == 0)
        console.Warn(strSubtitles, "no subtitle was due at any frame");
}

void ReportFrames(Console &console, const std::string &strOutput, const std::string &strSubtitles,
                  const FrameCounts &counts)
{
    WarnOfUnseen(console, strSubtitles, counts);
    console.Note(strOutput + ": " + Count(counts.All(), "frame") + ", " + std::to_string(counts.Shown()) +
                 " with a subtitle");
}
