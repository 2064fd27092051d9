#include "media/mediaoutput.h"

#include "commandline/failure.h"
#include "commandline/interrupt.h"
#include "media/codecs.h"
#include "media/streamdata.h"

#include <algorithm>
#include <cstring>

namespace
{

const AVOutputFormat *ContainerFor(const Options &options)
{
    const std::string strFile = options.OutputName();
    const bool bNamed = !options.strFormat.empty();
    const AVOutputFormat *pContainer =
        av_guess_format(bNamed ? options.strFormat.c_str() : nullptr, bNamed ? nullptr : strFile.c_str(), nullptr);
    if (!pContainer && bNamed)
        throw Failure(ExitCode::Usage, "--format: there is no container format named \"" + options.strFormat + "\"");
    if (!pContainer)
        throw Failure(ExitCode::Output, strFile, "its extension does not select a container format");
    if ((pContainer->flags & AVFMT_NOFILE) != 0 || pContainer->video_codec == AV_CODEC_ID_NONE)
        throw Failure(ExitCode::Output, strFile,
                      bNamed ? options.strFormat + " is not a format of video files"
                             : "this is not the name of a video file");
    return pContainer;
}

/** Leaves out tags of the source's container and, for an encoded stream, statistics about its size. */
void CopyTags(const AVDictionary *pFrom, AVDictionary **ppTo, bool bEncoded)
{
    for (const char *pKey : {"major_brand", "minor_version", "compatible_brands"})
        av_dict_set(ppTo, pKey, nullptr, 0);
    const AVDictionaryEntry *pEntry = nullptr;
    while ((pEntry = av_dict_get(pFrom, "", pEntry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        const std::string strKey = pEntry->key;
        const auto Begins = [&](const char *pText) { return strKey.rfind(pText, 0) == 0; };
        const bool bContainer = Begins("major_brand") || Begins("minor_version") || Begins("compatible_brands");
        const bool bStatistics = Begins("_STATISTICS_") || Begins("NUMBER_OF_") || Begins("BPS") ||
                                 Begins("DURATION") || strKey == "encoder" || strKey == "ENCODER";
        if (!bContainer && !(bEncoded && bStatistics))
            av_dict_set(ppTo, pEntry->key, pEntry->value, 0);
    }
}

/** The source's codec tag if it means the same codec in the new container, else 0. */
unsigned TagFor(const AVOutputFormat &container, const AVCodecParameters &parameters)
{
    unsigned nOther = 0;
    if (!container.codec_tag || av_codec_get_id(container.codec_tag, parameters.codec_tag) == parameters.codec_id ||
        av_codec_get_tag2(container.codec_tag, parameters.codec_id, &nOther) == 0)
        return parameters.codec_tag;
    return 0;
}

const char *KindOf(const AVStream &stream)
{
    const char *pKind = av_get_media_type_string(stream.codecpar->codec_type);
    return pKind ? pKind : "unknown";
}

} // namespace

MediaOutput::MediaOutput(const Options &options) :
    m_strFile(options.OutputName()), m_bCompatible(options.encoder.bCompatible)
{
    const AVOutputFormat *pContainer = ContainerFor(options);
    if (!options.WritesStandardOutput())
        m_pending.emplace(options.strOutput);
    const std::string strUrl = m_pending ? "file:" + m_pending->Path() : "pipe:1";
    avformat_alloc_output_context2(&m_pFormat, pContainer, nullptr, strUrl.c_str());
    Checked(m_pFormat)->interrupt_callback = Interrupt::Callback();
}

MediaOutput::~MediaOutput()
{
    avio_closep(&m_pFormat->pb);
    avformat_free_context(m_pFormat);
}

bool MediaOutput::HasBroadcastClock() const
{
    return IsOneOf({"mpegts"});
}

bool MediaOutput::IsOneOf(std::initializer_list<const char *> listNames) const
{
    return std::any_of(listNames.begin(), listNames.end(),
                       [&](const char *pName) { return std::strcmp(Container().name, pName) == 0; });
}

bool MediaOutput::IsMp4() const
{
    return IsOneOf({"mov", "mp4", "3gp", "3g2", "psp", "ipod", "ismv", "f4v"});
}

std::vector<bool> MediaOutput::ChooseStreams(const MediaInput &input, const Options &options, Console &console)
{
    for (const Subtitle &subtitle : options.listSubtitles)
        m_setBurnt.insert(input.StreamOf(subtitle.source));
    const AVFormatContext &source = input.Format();
    std::vector<bool> listWanted(source.nb_streams);
    m_listTargets.resize(source.nb_streams);
    int nSounds = 0;
    int nSoundsLeft = 0;
    for (unsigned n = 0; n < source.nb_streams; ++n) {
        const AVStream &stream = *source.streams[n];
        // The demuxer sets discard on streams that it uses itself, for example as chapters.
        if (&stream == &input.Video() || stream.discard == AVDISCARD_ALL)
            continue;
        // Players would show it a second time.
        if (m_setBurnt.count(stream.index) > 0 && !options.bKeepTrack)
            continue;
        const bool bSound = stream.codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
        if (bSound && options.sound.bNone)
            continue;
        listWanted[n] = bSound ? ChooseSound(stream, options.sound, console) : CanHold(Container(), stream);
        nSounds += bSound ? 1 : 0;
        nSoundsLeft += bSound && listWanted[n] ? 1 : 0;
        if (!listWanted[n])
            console.Warn(m_strFile, std::string("left out stream ") + std::to_string(n) + " (" + KindOf(stream) + ", " +
                                        avcodec_get_name(stream.codecpar->codec_id) +
                                        "), which this container cannot hold");
    }
    if (nSounds > nSoundsLeft && nSoundsLeft == 0 && Container().audio_codec != AV_CODEC_ID_NONE)
        throw Failure(ExitCode::Output, m_strFile, "no sound would be left (--audio-codec none leaves it out)");
    return listWanted;
}

/** Sets up an encoder for an audio stream unless it can be copied. @return false if neither is possible. */
bool MediaOutput::ChooseSound(const AVStream &source, const SoundChoice &choice, Console &console)
{
    if (choice.strCodec.empty() && CanHold(Container(), source))
        return true;
    const AVCodec *pCodec = choice.bCopyOnly ? nullptr : SoundEncoder::EncoderFor(Container(), choice);
    if (pCodec && !CanHoldCodec(Container(), *pCodec))
        throw Failure(ExitCode::Output, m_strFile,
                      std::string("the container cannot hold ") + avcodec_get_name(pCodec->id) + " sound");
    if (!pCodec)
        return false;
    std::unique_ptr<SoundEncoder> &pSound = m_listTargets[source.index].pSound;
    pSound = std::make_unique<SoundEncoder>(source, Container(), *pCodec, choice, m_strFile);
    if (choice.strCodec.empty())
        console.Note(m_strFile + ": stream " + std::to_string(source.index) + " is encoded as " +
                     avcodec_get_name(pCodec->id) + ", as this container cannot hold " +
                     avcodec_get_name(source.codecpar->codec_id));
    return true;
}

void MediaOutput::Begin(const MediaInput &input, const std::vector<bool> &listCopied, const VideoEncoder &encoder,
                        const AVFrame &first)
{
    const AVFormatContext &source = input.Format();
    CopyTags(source.metadata, &m_pFormat->metadata, true);
    m_nVideo = input.Video().index;
    for (unsigned n = 0; n < source.nb_streams; ++n) {
        const AVStream &stream = *source.streams[n];
        const bool bVideo = &stream == &input.Video();
        if (!bVideo && !listCopied[n])
            continue;
        AVStream &added = *Checked(avformat_new_stream(m_pFormat, nullptr));
        CopyTags(stream.metadata, &added.metadata, bVideo || m_listTargets[n].pSound);
        added.id = stream.id;
        added.disposition = stream.disposition;
        if (m_setBurnt.count(stream.index) > 0)
            added.disposition &= ~(AV_DISPOSITION_DEFAULT | AV_DISPOSITION_FORCED);
        added.avg_frame_rate = stream.avg_frame_rate;
        if (bVideo)
            AddVideo(added, stream, encoder, first);
        else if (m_listTargets[n].pSound)
            AddSound(added, *m_listTargets[n].pSound);
        else
            AddCopy(added, stream);
        m_listTargets[n].pStream = &added;
        m_listTargets[n].timeBase = m_listTargets[n].pSound ? added.time_base : stream.time_base;
    }
    CheckWritten(avio_open2(&m_pFormat->pb, m_pFormat->url, AVIO_FLAG_WRITE, &m_pFormat->interrupt_callback, nullptr));
    AVDictionary *pOptions = nullptr;
    // Index first, so that players can start before they have the whole file; fragments where we cannot seek back.
    if (IsMp4() && m_pending)
        av_dict_set(&pOptions, "movflags", "+faststart", 0);
    else if (IsMp4())
        av_dict_set(&pOptions, "movflags", "+frag_keyframe+empty_moov+default_base_moof", 0);
    const int nResult = avformat_write_header(m_pFormat, &pOptions);
    av_dict_free(&pOptions);
    CheckWritten(nResult);
}

void MediaOutput::AddVideo(AVStream &stream, const AVStream &source, const VideoEncoder &encoder, const AVFrame &first)
{
    if (avcodec_parameters_from_context(stream.codecpar, &encoder.Context()) < 0)
        throw std::bad_alloc();
    if (m_bCompatible && IsMp4() && encoder.Context().codec_id == AV_CODEC_ID_HEVC)
        stream.codecpar->codec_tag = MKTAG('h', 'v', 'c', '1');
    stream.time_base = encoder.TimeBase();
    stream.sample_aspect_ratio = encoder.Context().sample_aspect_ratio;
    CopyPictureSideData(source, first, stream, KeepsOrientation());
}

void MediaOutput::AddSound(AVStream &stream, const SoundEncoder &encoder) const
{
    if (avcodec_parameters_from_context(stream.codecpar, &encoder.Context()) < 0)
        throw std::bad_alloc();
    stream.time_base = encoder.Context().time_base;
    stream.avg_frame_rate = {0, 1};
}

void MediaOutput::AddCopy(AVStream &stream, const AVStream &source) const
{
    CopyParameters(*source.codecpar, *stream.codecpar);
    stream.codecpar->codec_tag = TagFor(Container(), *source.codecpar);
    stream.time_base = source.time_base;
    stream.sample_aspect_ratio = source.sample_aspect_ratio;
    stream.r_frame_rate = source.r_frame_rate;
    stream.duration = source.duration;
    CopyAllSideData(source, stream);
}

void MediaOutput::AddChapters(const AVFormatContext &source, int64_t nShift, int64_t nDuration)
{
    for (unsigned n = 0; n < source.nb_chapters; ++n) {
        const AVChapter &chapter = *source.chapters[n];
        const int64_t nOffset = av_rescale_q(nShift, Microseconds, chapter.time_base);
        const int64_t nEnd = nDuration > 0 ? av_rescale_q(nDuration, Microseconds, chapter.time_base) : INT64_MAX;
        if (chapter.end - nOffset <= 0 || chapter.start - nOffset >= nEnd)
            continue;
        auto *pCopy = static_cast<AVChapter *>(Checked(av_mallocz(sizeof(AVChapter))));
        av_dynarray_add(&m_pFormat->chapters, reinterpret_cast<int *>(&m_pFormat->nb_chapters), pCopy);
        Checked(m_pFormat->chapters);
        pCopy->id = chapter.id;
        pCopy->time_base = chapter.time_base;
        pCopy->start = nShift > 0 ? std::max<int64_t>(0, chapter.start - nOffset) : chapter.start - nOffset;
        pCopy->end = std::min(chapter.end - nOffset, nEnd);
        av_dict_copy(&pCopy->metadata, chapter.metadata, 0);
    }
}

void MediaOutput::WriteVideo(AVPacket &packet, AVRational timeBase)
{
    Target &target = m_listTargets[m_nVideo];
    target.timeBase = timeBase;
    Write(packet, target);
}

void MediaOutput::WriteOther(AVPacket &packet)
{
    Target &target = m_listTargets[packet.stream_index];
    if (target.pSound)
        EncodeSound(&packet, target);
    else if (target.pStream)
        Write(packet, target);
}

void MediaOutput::EncodeSound(const AVPacket *pPacket, Target &target)
{
    target.pSound->Encode(pPacket, [&](AVPacket &packet) { Write(packet, target); });
}

void MediaOutput::Write(AVPacket &packet, Target &target)
{
    av_packet_rescale_ts(&packet, target.timeBase, target.pStream->time_base);
    packet.stream_index = target.pStream->index;
    packet.pos = -1;
    if (packet.dts == AV_NOPTS_VALUE)
        packet.dts = packet.pts;
    if (packet.dts != AV_NOPTS_VALUE && target.nLast != AV_NOPTS_VALUE) {
        // Broadcast clocks jump and coarse time bases round, but muxers need increasing time stamps.
        const int64_t nLeast = target.nLast + ((Container().flags & AVFMT_TS_NONSTRICT) != 0 ? 0 : 1);
        packet.dts = std::max(packet.dts, nLeast);
    }
    if (packet.dts != AV_NOPTS_VALUE) {
        if (packet.pts != AV_NOPTS_VALUE)
            packet.pts = std::max(packet.pts, packet.dts);
        target.nLast = packet.dts;
    }
    CheckWritten(av_interleaved_write_frame(m_pFormat, &packet));
}

void MediaOutput::Finish()
{
    for (Target &target : m_listTargets) {
        if (target.pSound)
            EncodeSound(nullptr, target);
    }
    CheckWritten(av_write_trailer(m_pFormat));
    CheckWritten(m_pFormat->pb->error);
    CheckWritten(avio_closep(&m_pFormat->pb));
    if (m_pending)
        m_pending->Commit();
}

void MediaOutput::CheckWritten(int nResult) const
{
    Interrupt::Check();
    if (nResult < 0)
        throw Failure(ExitCode::Output, m_strFile, AvReason(nResult));
}
