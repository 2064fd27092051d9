#pragma once

#include "console.h"
#include "mediainput.h"
#include "pendingfile.h"
#include "soundencoder.h"
#include "videoencoder.h"

/** Writes the encoded video, and the copied packets of the other streams, into a container. */
class MediaOutput
{
public:
    /** Throws a Failure when no container goes by the output's name. */
    explicit MediaOutput(const Options &options);
    ~MediaOutput();

    MediaOutput(const MediaOutput &) = delete;
    MediaOutput &operator=(const MediaOutput &) = delete;

    const AVOutputFormat &Container() const { return *m_pFormat->oformat; }

    /** Whether times in this container may begin anywhere, as they do in transport streams. */
    bool HasBroadcastClock() const;

    /** Whether players learn from this container how to turn the pictures. */
    bool KeepsOrientation() const { return IsMp4(); }

    /**
     * Tells which streams of the input are copied, or encoded where they are sound, and warns about those that cannot be.
     * Throws a Failure where no sound would be left of an input that has some.
     */
    std::vector<bool> ChooseStreams(const MediaInput &input, const Options &options, Console &console);

    /**
     * Takes over all that is not pictures: streams, tags, chapters. Begins the file.
     * @param nShift     microseconds by which time stamps were moved.
     * @param nDuration  microseconds to be written, 0 when all.
     */
    void Begin(const MediaInput &input, const std::vector<bool> &listCopied, const VideoEncoder &encoder,
               const AVFrame &first);
    void AddChapters(const AVFormatContext &source, int64_t nShift, int64_t nDuration);

    /** A packet of the encoder's time base. */
    void WriteVideo(AVPacket &packet, AVRational timeBase);

    /** A packet of the input, as it was read; sound is encoded where it has to be. */
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
    int m_nBurnt = -1;
};
