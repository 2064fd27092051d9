#include "commandline/report.h"

#include "commandline/values.h"
#include "media/ffmpegptr.h"

#include <algorithm>

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

void WarnOfLostMatrix(Console &console, const std::string &strOutput, const Orientation &orientation)
{
    if (!orientation.IsOther())
        return;
    const std::string strAngle = orientation.OtherAngle();
    console.Warn(strOutput, "the display matrix" + (strAngle.empty() ? "" : " (" + strAngle + ")") +
                                " is lost, the output cannot hold it and pictures are turned by quarters only");
}

void FrameCounts::Add(Due due)
{
    ++m_nAll;
    m_nShown += due == Due::Shown ? 1 : 0;
    m_nUnseen += due == Due::Unseen ? 1 : 0;
}

BurnCounts::BurnCounts(const std::vector<Subtitle> &listSubtitles) : m_listEach(listSubtitles.size())
{
    for (const Subtitle &subtitle : listSubtitles) {
        const auto nSame = std::count_if(listSubtitles.begin(), listSubtitles.end(), [&](const Subtitle &other) {
            return other.source.strFile == subtitle.source.strFile;
        });
        m_listNames.push_back(subtitle.source.strFile +
                              (nSame > 1 ? ", track " + std::to_string(subtitle.source.nTrack) : ""));
    }
}

void BurnCounts::Add(const std::vector<Due> &listDues)
{
    m_any.Add(*std::max_element(listDues.begin(), listDues.end()));
    for (size_t n = 0; n < listDues.size(); ++n)
        m_listEach[n].Add(listDues[n]);
}

std::string BurnCounts::TextOf(const std::vector<Due> &listDues) const
{
    std::string strNames;
    for (size_t n = 0; n < listDues.size(); ++n) {
        if (listDues[n] == Due::Shown)
            strNames += (strNames.empty() ? "" : " and of ") + m_listNames[n];
    }
    if (strNames.empty())
        return "without a subtitle";
    return listDues.size() > 1 ? "with a subtitle of " + strNames : "with a subtitle";
}

void WarnOfUnseen(Console &console, const BurnCounts &counts)
{
    for (size_t n = 0; n < counts.OfEach().size(); ++n) {
        const FrameCounts &own = counts.OfEach()[n];
        if (own.Unseen() > 0)
            console.Warn(counts.NameOf(n),
                         "at " + Count(own.Unseen(), "frame") +
                             " a picture was due whose colours have no blue; --exact shows nothing of it");
        else if (own.Shown() == 0)
            console.Warn(counts.NameOf(n), "no subtitle was due at any frame");
    }
}

void ReportFrames(Console &console, const std::string &strOutput, const BurnCounts &counts)
{
    WarnOfUnseen(console, counts);
    const std::vector<FrameCounts> &listEach = counts.OfEach();
    for (size_t n = 0; n < listEach.size() && listEach.size() > 1; ++n)
        console.Note(counts.NameOf(n) + ": " + Count(listEach[n].Shown(), "frame") + " with a subtitle");
    console.Note(strOutput + ": " + Count(counts.OfAny().All(), "frame") + ", " +
                 std::to_string(counts.OfAny().Shown()) + " with a subtitle");
}
