#include "subtitles/subtitletracks.h"

#include "commandline/failure.h"
#include "media/demuxer.h"

#include <algorithm>

namespace
{

/** A name quoted for a shell if necessary. */
std::string Quoted(const std::string &strName)
{
    const bool isPlain = strName.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                                   "%+,-./:=@_") == std::string::npos;
    if (isPlain)
        return strName;
    std::string strQuoted = "'";
    for (const char c : strName)
        strQuoted += c == '\'' ? "'\\''" : std::string(1, c);
    return strQuoted + '\'';
}

} // namespace

SubtitleTracks::SubtitleTracks(const std::string &strFile) : m_strFile(strFile), m_pFormat(OpenDemuxer(strFile))
{
    AddNewStreams();
}

void SubtitleTracks::AddNewStreams()
{
    for (; m_nKnownStreams < m_pFormat->nb_streams; ++m_nKnownStreams) {
        AVStream &stream = *m_pFormat->streams[m_nKnownStreams];
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE)
            m_listTracks.emplace_back(stream, OriginOf(*m_pFormat));
        else
            stream.discard = AVDISCARD_ALL;
    }
}

void SubtitleTracks::Read()
{
    const PacketPtr pPacket = NewPacket();
    while (ReadPacket(*m_pFormat, m_strFile, *pPacket)) {
        // In program streams, a stream is found only at its first packet.
        AddNewStreams();
        const auto track = std::find_if(m_listTracks.begin(), m_listTracks.end(), [&](const SubtitleTrack &candidate) {
            return candidate.Stream() == pPacket->stream_index;
        });
        if (track != m_listTracks.end())
            track->Add(*pPacket);
    }
}

bool SubtitleTracks::HasPictures(int nTrack) const
{
    return nTrack < static_cast<int>(m_listTracks.size()) && m_listTracks[nTrack].HasPictures();
}

int64_t SubtitleTracks::Origin() const
{
    return av_rescale_q(OriginOf(*m_pFormat), Microseconds, Milliseconds);
}

/** The end of the error message: how to get a file from which the track is burnt, if there is a way. */
std::string SubtitleTracks::RemedyFor(const SubtitleTrack &track) const
{
    if (track.Codec() != AV_CODEC_ID_DVD_SUBTITLE)
        return "";
    if (std::string(m_pFormat->iformat->name).find("matroska") == std::string::npos)
        return " from here, only from the .idx file of a VobSub pair";
    return " from here; burn the .idx file that this makes: mkvextract " + Quoted(m_strFile) + " tracks " +
           std::to_string(track.Stream()) + ":track.idx";
}

const SubtitleTrack &SubtitleTracks::ReadOnly(int nTrack)
{
    const int nTracks = static_cast<int>(m_listTracks.size());
    if (nTracks == 0)
        throw Failure(ExitCode::Input, m_strFile, "there are no subtitles in it");
    if (nTrack >= nTracks)
        throw Failure(ExitCode::Input, m_strFile,
                      "there is no subtitle track " + std::to_string(nTrack) + ", the last is " +
                          std::to_string(nTracks - 1));
    const SubtitleTrack &track = m_listTracks[nTrack];
    if (!track.HasText())
        throw Failure(ExitCode::Input, m_strFile,
                      "subtitle track " + std::to_string(nTrack) + " is " + track.CodecName() +
                          (track.HasPictures() ? ", which --exact cannot burn" : ", which cannot be burnt") +
                          RemedyFor(track));
    for (unsigned n = 0; n < m_pFormat->nb_streams; ++n) {
        if (static_cast<int>(n) != track.Stream())
            m_pFormat->streams[n]->discard = AVDISCARD_ALL;
    }
    Read();
    return m_listTracks[nTrack];
}
