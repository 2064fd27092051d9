#pragma once

#include "commandline/options.h"
#include "media/mediainput.h"

#include <optional>
#include <vector>

/** Reads the wanted part of an input and shifts its time stamps to those of the output. */
class FrameFeeder
{
public:
    /**
     * @param listCopied  for each stream of the input, whether its packets are wanted.
     * @param bKeepTimes  false makes the file's beginning time 0, for inputs whose clock starts anywhere. If the range
     *                    has a start, the first picture gets time 0 in any case.
     */
    FrameFeeder(MediaInput &input, const TimeRange &range, std::vector<bool> listCopied, bool bKeepTimes);

    /**
     * Gives a frame first; packets read before it follow. All time stamps are already shifted.
     * @return false at the end.
     */
    bool Next(MediaItem &item);

    /** Microseconds subtracted from the time stamps. */
    int64_t Shift() const { return av_rescale_q(m_nShift, Video().time_base, Microseconds); }

    /** Expected duration of the wanted part in microseconds, 0 if unknown. */
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
