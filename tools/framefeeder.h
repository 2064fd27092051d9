#pragma once

#include "mediainput.h"
#include "options.h"

#include <optional>
#include <vector>

/** Gives the wanted part of an input, with the time stamps that the output shall have. */
class FrameFeeder
{
public:
    /** @param listCopied  whether the packets of each stream are wanted. */
    FrameFeeder(MediaInput &input, const TimeRange &range, std::vector<bool> listCopied);

    /**
     * The first item is a frame. Its time stamps and those of all others are shifted already.
     * @return false at the end.
     */
    bool Next(MediaItem &item);

    /** Microseconds that were cut off before the first frame. */
    int64_t Shift() const { return m_bShifts ? av_rescale_q(m_nShift, Video().time_base, Microseconds) : 0; }

    /** Microseconds to be expected, 0 when unknown. */
    int64_t Expected() const;

private:
    const AVStream &Video() const { return m_input.Video(); }
    bool Read(MediaItem &item);
    bool TakeFrame(AVFrame &frame, long &nMilliseconds);
    bool TakePacket(AVPacket &packet);
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
    int64_t m_nShift = 0;
    int64_t m_nLast = INT64_MIN;
    bool m_bShifts = false;
    bool m_bBegun = false;
    bool m_bVideoDone = false;
    bool m_bDone = false;
};
