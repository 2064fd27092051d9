#pragma once

#include "mediainput.h"
#include "options.h"

#include <optional>
#include <vector>

/** Gives the wanted part of an input, with the time stamps that the output shall have. */
class FrameFeeder
{
public:
    /**
     * @param listCopied  whether the packets of each stream are wanted.
     * @param bKeepTimes  false begins the times of an input whose clock starts anywhere at 0; so does a start of the range.
     */
    FrameFeeder(MediaInput &input, const TimeRange &range, std::vector<bool> listCopied, bool bKeepTimes);

    /**
     * The first item is a frame. Its time stamps and those of all others are shifted already.
     * @return false at the end.
     */
    bool Next(MediaItem &item);

    /** Microseconds that time stamps were moved back by. */
    int64_t Shift() const { return av_rescale_q(m_nShift, Video().time_base, Microseconds); }

    /** Microseconds to be expected, 0 when unknown. */
    int64_t Expected() const;

private:
    const AVStream &Video() const { return m_input.Video(); }
    bool Read(MediaItem &item);
    bool TakeFrame(AVFrame &frame, long &nMilliseconds);
    bool TakePacket(AVPacket &packet);
    void Shift(AVPacket &packet) const;
    bool CutBefore(AVPacket &packet) const;
    void NotePastEnd(const AVPacket &packet);

    MediaInput &m_input;
    std::vector<bool> m_listCopied;
    std::deque<MediaItem> m_listWaiting;
    std::vector<bool> m_listAwaited;
    TimeRange m_range;
    int64_t m_nOrigin;
    int64_t m_nStart = INT64_MIN;
    int64_t m_nEnd = INT64_MAX;
    int64_t m_nShift;
    int64_t m_nLast = INT64_MIN;
    bool m_bCuts;
    bool m_bBegun = false;
    bool m_bVideoDone = false;
    bool m_bDone = false;
};
