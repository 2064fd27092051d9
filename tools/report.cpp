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

void WarnOfNone(Console &console, const std::string &strSubtitles, int64_t nCarrying)
{
    if (nCarrying == 0)
        console.Warn(strSubtitles, "no subtitle was due at any frame");
}

void ReportFrames(Console &console, const std::string &strOutput, const std::string &strSubtitles, int64_t nFrames,
                  int64_t nCarrying)
{
    WarnOfNone(console, strSubtitles, nCarrying);
    console.Note(strOutput + ": " + Count(nFrames, "frame") + ", " + std::to_string(nCarrying) + " with a subtitle");
}
