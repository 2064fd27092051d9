#include "parsers/packetpictures.h"

#include "parsers/duetexts.h"

#include <algorithm>
#include <climits>
#include <limits>
#include <utility>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/mathematics.h>
}

namespace
{

/** Limit of packets that are decoded before one that builds on them. */
constexpr int MaxLead = 1024;

constexpr std::int64_t NoTime = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t MaxTime = std::int64_t{1} << 52; ///< in milliseconds, so that sums do not overflow

/** @return milliseconds; NoTime for an unknown or impossible time. */
std::int64_t ToMilliseconds(std::int64_t time, const AVRational &base)
{
    if (time == AV_NOPTS_VALUE)
        return NoTime;
    const std::int64_t ms = av_rescale_q_rnd(time, base, {1, 1000}, AV_ROUND_ZERO);
    return ms < -MaxTime || ms > MaxTime ? NoTime : ms;
}

} // namespace

void PacketPictures::Begin(const AVFormatContext &input, int track)
{
    *this = {};
    const AVCodecParameters &parameters = *input.streams[track]->codecpar;
    if (!PictureDecoder::Knows(parameters.codec_id))
        return;
    int width = 0;
    int height = 0;
    for (unsigned i = 0; i < input.nb_streams; ++i) {
        const AVCodecParameters &stream = *input.streams[i]->codecpar;
        if (stream.codec_type == AVMEDIA_TYPE_VIDEO &&
            std::int64_t{stream.width} * stream.height > std::int64_t{width} * height) {
            width = stream.width;
            height = stream.height;
        }
    }
    m_decoder.emplace(parameters, width, height);
}

void PacketPictures::Add(const AVPacket &packet, const AVRational &timeBase)
{
    if (!m_decoder || packet.size <= 0)
        return;
    const std::int64_t start = ToMilliseconds(packet.pts, timeBase);
    const std::int64_t duration = packet.duration > 0 ? ToMilliseconds(packet.duration, timeBase) : NoTime;
    const std::int64_t end = start != NoTime && duration != NoTime ? start + duration : DecodedPicture::NoEnd;
    m_listPackets.push_back(
        {m_listBytes.size(), packet.size, m_decoder->IsStart(packet.data, packet.size), start, end});
    m_listBytes.insert(m_listBytes.end(), packet.data, packet.data + packet.size);
}

void PacketPictures::End()
{
    std::vector<CueIndex::Span> spans(m_listPackets.size());
    std::int64_t next = DecodedPicture::NoEnd;  // the start of the next packet
    std::int64_t later = DecodedPicture::NoEnd; // the start of the next packet after that time
    for (std::size_t i = m_listPackets.size(); i-- > 0;) {
        Packet &packet = m_listPackets[i];
        spans[i] = {0, -1};
        if (packet.nStart == NoTime)
            continue;
        if (packet.nStart < next)
            later = next;
        next = packet.nStart;
        if (packet.nEnd == DecodedPicture::NoEnd)
            packet.nEnd = later > packet.nStart ? later : DecodedPicture::NoEnd;
        spans[i] = {packet.nStart, packet.nEnd - 1};
    }
    m_index = OverlapIndex(std::move(spans));
}

std::int64_t PacketPictures::StartOf(const Due &due) const
{
    return m_listPackets[due.nPlace].nStart + due.decoded.nStart;
}

std::int64_t PacketPictures::EndOf(const Due &due) const
{
    const Packet &packet = m_listPackets[due.nPlace];
    return due.decoded.nEnd == DecodedPicture::NoEnd ? packet.nEnd
                                                     : std::min(packet.nEnd, packet.nStart + due.decoded.nEnd);
}

QString PacketPictures::DueAt(std::int64_t ms)
{
    if (!m_decoder || ms <= 0)
        return {};
    if (m_steady.nFirst <= ms && ms <= m_steady.nLast)
        return m_strKey;
    m_steady = {0, -1};
    m_listShown.clear();
    CueIndex::Span steady = m_index.Find(ms, MaxDueItems, m_listFound);
    steady.nFirst = std::max<std::int64_t>(steady.nFirst, 1);
    DecodeFound();
    QString key;
    for (const Due &due : m_listDue) {
        for (const std::int64_t change : {StartOf(due), EndOf(due)}) {
            if (change <= ms)
                steady.nFirst = std::max(steady.nFirst, change);
            else
                steady.nLast = std::min(steady.nLast, change - 1);
        }
        if (StartOf(due) <= ms && ms < EndOf(due) && due.decoded.picture.nColumns > 0) {
            m_listShown.push_back(&due.decoded.picture);
            key += QString::number(due.nPlace) + QLatin1Char(' ');
        }
    }
    m_strKey = key;
    m_steady = steady;
    return m_strKey;
}

/** Updates m_listDue from m_listFound. Pictures that are in both are not decoded again. */
void PacketPictures::DecodeFound()
{
    std::vector<Due> before; // dropped if an allocation fails
    before.swap(m_listDue);
    std::vector<Due> due;
    due.reserve(m_listFound.size());
    std::int64_t rest = MaxDuePixels;
    std::size_t pictures = 0;
    auto known = before.begin();
    for (const int place : m_listFound) {
        if (rest <= 0 || pictures >= MaxDuePictures)
            break;
        while (known != before.end() && known->nPlace < place)
            ++known;
        if (known != before.end() && known->nPlace == place) {
            rest -= known->decoded.nCost;
            due.push_back(std::move(*known));
        } else {
            due.push_back({place, Decode(place, rest)});
        }
        pictures += due.back().decoded.picture.nColumns > 0 ? 1 : 0;
    }
    m_listDue = std::move(due);
}

/** @param rest  remaining pixels that may be decoded; reduced by those that are. */
DecodedPicture PacketPictures::Decode(int place, std::int64_t &rest)
{
    const bool isAhead = m_nNext <= place;
    const int lowest = std::max(isAhead ? m_nNext : 0, place - MaxLead);
    int first = place;
    while (first > lowest && !m_listPackets[first].bStart)
        --first;
    if (!isAhead || first != m_nNext || m_listPackets[first].bStart)
        m_decoder->Restart();
    m_nNext = INT_MAX; // in case decoding throws or stops early
    DecodedPicture decoded;
    for (int i = first; i <= place && rest > 0; ++i) {
        const Packet &packet = m_listPackets[i];
        decoded = m_decoder->Decode(m_listBytes.data() + packet.nAt, packet.nSize, packet.nStart);
        rest -= decoded.nCost;
        if (i == place)
            m_nNext = place + 1;
    }
    return m_nNext == INT_MAX ? DecodedPicture() : std::move(decoded);
}

ColorPicture PacketPictures::Picture(const QString &key) const
{
    return key == m_strKey ? LaidTogether(m_listShown) : ColorPicture();
}
