#include "subtitles/subtitletrack.h"

#include "subtitles/cuetext.h"
#include "subtitles/picturecue.h"

#include <algorithm>
#include <cstdlib>

SubtitleTrack::SubtitleTrack(const AVStream &stream, int64_t nOrigin) : m_pStream(&stream), m_nOrigin(nOrigin)
{
    if (!HoldsText(Codec()) && CueDecoder::Knows(Codec()))
        m_pDecoder = std::make_unique<CueDecoder>(stream);
}

bool SubtitleTrack::HasText() const
{
    return m_pDecoder || HoldsText(Codec());
}

bool SubtitleTrack::HasPictures() const
{
    // Pictures of DVDs have their colours and their video's size in the header of the track. A .sub file has none.
    return Codec() == AV_CODEC_ID_DVB_SUBTITLE || Codec() == AV_CODEC_ID_HDMV_PGS_SUBTITLE ||
           (Codec() == AV_CODEC_ID_DVD_SUBTITLE && m_pStream->codecpar->extradata_size > 0);
}

std::string SubtitleTrack::TextOf(const AVPacket &packet)
{
    if (m_pDecoder)
        return m_pDecoder->Text(packet);
    return HoldsText(Codec()) ? CueText(Codec(), packet) : "";
}

void SubtitleTrack::Add(const AVPacket &packet)
{
    const bool bBluRay = Codec() == AV_CODEC_ID_HDMV_PGS_SUBTITLE;
    if (packet.pts == AV_NOPTS_VALUE || (bBluRay && !BeginsBluRayPage(packet)))
        return;
    const AVRational base = m_pStream->time_base;
    const int64_t nOrigin = av_rescale_q(m_nOrigin, Microseconds, base);
    Cue cue;
    cue.nStart = std::max<int64_t>(0, av_rescale_q(packet.pts - nOrigin, base, Milliseconds));
    cue.nEnd = cue.nStart;
    if (m_bOpen)
        m_listCues.back().nEnd = std::max(m_listCues.back().nEnd, cue.nStart);
    m_bOpen = false;
    if (!(bBluRay ? ShowsBluRayPicture(packet) : ShowsAnything(Codec(), packet)))
        return;
    if (packet.duration > 0)
        cue.nEnd = std::max(cue.nStart, av_rescale_q(packet.pts + packet.duration - nOrigin, base, Milliseconds));
    else if (Codec() == AV_CODEC_ID_DVD_SUBTITLE)
        cue.nEnd += DvdDuration(packet);
    cue.bEndKnown = cue.nEnd > cue.nStart;
    m_bOpen = !cue.bEndKnown;
    cue.strText = TextOf(packet);
    // Packets come in time order; only ASS stores the order of the script.
    cue.nOrder = Codec() == AV_CODEC_ID_ASS ? std::strtoll(reinterpret_cast<const char *>(packet.data), nullptr, 10)
                                            : static_cast<int64_t>(m_listCues.size());
    m_listCues.push_back(std::move(cue));
}

std::string SubtitleTrack::Tag(const char *pKey) const
{
    const AVDictionaryEntry *pEntry = av_dict_get(m_pStream->metadata, pKey, nullptr, 0);
    return pEntry ? pEntry->value : "";
}
