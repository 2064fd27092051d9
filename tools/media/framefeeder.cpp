#include "media/framefeeder.h"

#include <algorithm>

namespace
{

// How far past the end to read for late audio once the last picture was read; in microseconds.
const int64_t Overlap = 3 * static_cast<int64_t>(AV_TIME_BASE);

int64_t TimeOf(const AVPacket &packet)
{
    return packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts;
}

} // namespace

FrameFeeder::FrameFeeder(MediaInput &input, const TimeRange &range, std::vector<bool> listCopied, bool bKeepTimes) :
    m_input(input),
    m_listCopied(std::move(listCopied)),
    m_listAwaited(m_listCopied.size()),
    m_range(range),
    m_nOrigin(input.Origin()),
    m_nShift(bKeepTimes ? 0 : m_nOrigin),
    m_bCuts(range.nStart.has_value())
{
    const AVRational base = Video().time_base;
    if (range.nStart) {
        m_nStart = m_nOrigin + av_rescale_q_rnd(*range.nStart, Microseconds, base, AV_ROUND_UP);
        input.SeekBefore(m_nStart);
    }
    if (range.nDuration)
        m_nEnd =
            m_nOrigin + av_rescale_q_rnd(range.nStart.value_or(0) + *range.nDuration, Microseconds, base, AV_ROUND_UP);
    for (unsigned n = 0; n < input.Format().nb_streams; ++n)
        m_listAwaited[n] = m_listCopied[n] && input.Format().streams[n]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
}

int64_t FrameFeeder::Expected() const
{
    const AVFormatContext &format = m_input.Format();
    int64_t nTotal = 0;
    if (format.duration != AV_NOPTS_VALUE)
        nTotal = std::max<int64_t>(0, format.duration - m_range.nStart.value_or(0));
    if (m_range.nDuration)
        nTotal = nTotal > 0 ? std::min(nTotal, *m_range.nDuration) : *m_range.nDuration;
    return nTotal;
}

bool FrameFeeder::Next(MediaItem &item)
{
    if (m_bBegun && !m_listWaiting.empty()) {
        item = std::move(m_listWaiting.front());
        m_listWaiting.pop_front();
        return true;
    }
    while (!m_bDone && Read(item)) {
        if (item.pFrame && TakeFrame(*item.pFrame, item.nMilliseconds)) {
            if (!m_bBegun) {
                m_bBegun = true;
                // Only the first picture sets the shift, so packets read before it had to wait.
                const auto Unwanted = [this](const MediaItem &waiting) { return !TakePacket(*waiting.pPacket); };
                m_listWaiting.erase(std::remove_if(m_listWaiting.begin(), m_listWaiting.end(), Unwanted),
                                    m_listWaiting.end());
            }
            return true;
        }
        if (item.pPacket && m_listCopied[item.pPacket->stream_index]) {
            if (!m_bBegun)
                m_listWaiting.push_back(std::move(item));
            else if (TakePacket(*item.pPacket))
                return true;
        }
    }
    return false;
}

bool FrameFeeder::Read(MediaItem &item)
{
    m_bDone = m_bVideoDone && std::find(m_listAwaited.begin(), m_listAwaited.end(), true) == m_listAwaited.end();
    return !m_bDone && m_input.Next(item);
}

bool FrameFeeder::TakeFrame(AVFrame &frame, long &nMilliseconds)
{
    if (frame.pts >= m_nEnd)
        m_bVideoDone = true;
    if (m_bVideoDone || frame.pts < m_nStart)
        return false;
    nMilliseconds = av_rescale_q(frame.pts - m_nOrigin, Video().time_base, Milliseconds);
    if (!m_bBegun && m_bCuts)
        m_nShift = frame.pts;
    // Encoders and containers need increasing time stamps.
    frame.pts = std::max(frame.pts - m_nShift, m_nLast == INT64_MIN ? INT64_MIN : m_nLast + 1);
    m_nLast = frame.pts;
    return true;
}

bool FrameFeeder::TakePacket(AVPacket &packet)
{
    const AVStream &stream = *m_input.Format().streams[packet.stream_index];
    if ((stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {
        packet.pts = 0;
        packet.dts = 0;
        return true;
    }
    const int64_t nTime = TimeOf(packet);
    if (nTime == AV_NOPTS_VALUE)
        return true;
    if (m_nEnd != INT64_MAX && av_compare_ts(nTime, stream.time_base, m_nEnd, Video().time_base) >= 0) {
        NotePastEnd(packet);
        return false;
    }
    Shift(packet);
    return !m_bCuts || !CutBefore(packet);
}

void FrameFeeder::Shift(AVPacket &packet) const
{
    const AVStream &stream = *m_input.Format().streams[packet.stream_index];
    const int64_t nShift = av_rescale_q(m_nShift, Video().time_base, stream.time_base);
    if (packet.pts != AV_NOPTS_VALUE)
        packet.pts -= nShift;
    if (packet.dts != AV_NOPTS_VALUE)
        packet.dts -= nShift;
}

/** Whether a shifted packet is before the first picture. Shortens a subtitle that is still on display then. */
bool FrameFeeder::CutBefore(AVPacket &packet) const
{
    const AVStream &stream = *m_input.Format().streams[packet.stream_index];
    const int64_t nTime = TimeOf(packet);
    if (nTime >= 0)
        return false;
    if (stream.codecpar->codec_type != AVMEDIA_TYPE_SUBTITLE || nTime + packet.duration <= 0)
        return true;
    // It is still on display then: let it begin with the first picture.
    packet.duration += nTime;
    packet.pts = 0;
    packet.dts = 0;
    return false;
}

void FrameFeeder::NotePastEnd(const AVPacket &packet)
{
    const AVRational base = m_input.Format().streams[packet.stream_index]->time_base;
    m_listAwaited[packet.stream_index] = false;
    const int64_t nPast =
        av_rescale_q(TimeOf(packet), base, Microseconds) - av_rescale_q(m_nEnd, Video().time_base, Microseconds);
    if (m_bVideoDone && nPast > Overlap)
        m_listAwaited.assign(m_listAwaited.size(), false);
}
