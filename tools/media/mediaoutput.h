#pragma once

#include "commandline/console.h"
#include "commandline/pendingfile.h"
#include "media/mediainput.h"
#include "media/soundencoder.h"
#include "media/videoencoder.h"

#include <set>

/** Writes the encoded video, and the copied packets of the other streams, into a container. */
class MediaOutput
{
public:
    /** Throws a Failure if no container format fits --format or the output's name. */
    explicit MediaOutput(const Options &options);
    ~MediaOutput();

    MediaOutput(const MediaOutput &) = delete;
    MediaOutput &operator=(const MediaOutput &) = delete;

    const AVOutputFormat &Container() const { return *m_pFormat->oformat; }

    /** Whether times in this container need not begin at 0, as in transport streams. */
    bool HasBroadcastClock() const;

    /** Whether the container can store how players have to turn the pictures. */
    bool KeepsOrientation() const { return IsMp4(); }

    /** Whether this container has fields for the display that a film was mastered on. */
    bool KeepsMasteringDisplay() const { return KeepsLightLevels() || IsOneOf({"mxf"}); }

    bool KeepsLightLevels() const { return IsOneOf({"matroska", "webm", "mp4", "mov"}); }

    /**
     * Chooses the streams of the input, other than the video, that are copied or, if audio, encoded anew. Warns about
     * those that the container cannot hold. Throws a Failure if no audio would be left of an input that has some.
     * @return a flag for each stream of the input.
     */
    std::vector<bool> ChooseStreams(const MediaInput &input, const Options &options, Console &console);

    /**
     * Adds the streams with their tags, opens the file and writes the header.
     * @param listCopied  the result of ChooseStreams().
     * @param first       the first frame, before conversion: its side data is used where the stream has none.
     */
    void Begin(const MediaInput &input, const std::vector<bool> &listCopied, const VideoEncoder &encoder,
               const AVFrame &first);

    /**
     * Copies the source's chapters; call before Begin().
     * @param nShift     microseconds subtracted from the time stamps.
     * @param nDuration  microseconds to be written, 0 for all.
     */
    void AddChapters(const AVFormatContext &source, int64_t nShift, int64_t nDuration);

    /** @param timeBase  of the packet's time stamps. */
    void WriteVideo(AVPacket &packet, AVRational timeBase);

    /** Copies a packet of the input, or encodes it if its stream is audio to be encoded; other streams are ignored. */
    void WriteOther(AVPacket &packet);

    void Finish();

private:
    struct Target {
        AVStream *pStream = nullptr;
        AVRational timeBase = {0, 1};
        int64_t nLast = AV_NOPTS_VALUE;
        std::unique_ptr<SoundEncoder> pSound;
    };

    void AddVideo(AVStream &stream, const AVStream &source, const VideoEncoder &encoder, const AVFrame &first);
    bool IsOneOf(std::initializer_list<const char *> listNames) const;
    bool IsMp4() const;
    bool ChooseSound(const AVStream &source, const SoundChoice &choice, Console &console);
    void EncodeSound(const AVPacket *pPacket, Target &target);
    void AddSound(AVStream &stream, const SoundEncoder &encoder) const;
    void AddCopy(AVStream &stream, const AVStream &source) const;
    void Write(AVPacket &packet, Target &target);
    void CheckWritten(int nResult) const;

    std::string m_strFile;
    std::optional<PendingFile> m_pending;
    bool m_bCompatible;
    AVFormatContext *m_pFormat = nullptr;
    std::vector<Target> m_listTargets;
    int m_nVideo = 0;
    std::set<int> m_setBurnt;
};
