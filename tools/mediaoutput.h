#pragma once

#include "console.h"
#include "mediainput.h"
#include "pendingfile.h"
#include "videoencoder.h"

/** Writes the encoded video, and the copied packets of the other streams, into a container. */
class MediaOutput
{
public:
    /** Throws a Failure when no container goes by the file's name. */
    explicit MediaOutput(const std::string &strFile);
    ~MediaOutput();

    MediaOutput(const MediaOutput &) = delete;
    MediaOutput &operator=(const MediaOutput &) = delete;

    const AVOutputFormat &Container() const { return *m_pFormat->oformat; }

    /** Tells which streams of the input can be copied, and warns about the others. */
    std::vector<bool> ChooseCopies(const MediaInput &input, Console &console) const;

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

    /** A packet of the input, as it was read. */
    void WriteCopy(AVPacket &packet);

    void Finish();

private:
    struct Target {
        AVStream *pStream = nullptr;
        AVRational timeBase = {0, 1};
        int64_t nLast = AV_NOPTS_VALUE;
    };

    void AddVideo(AVStream &stream, const AVStream &source, const VideoEncoder &encoder, const AVFrame &first);
    void AddCopy(AVStream &stream, const AVStream &source) const;
    void Write(AVPacket &packet, Target &target);
    void CheckWritten(int nResult) const;

    std::string m_strFile;
    PendingFile m_pending;
    AVFormatContext *m_pFormat = nullptr;
    std::vector<Target> m_listTargets;
    int m_nVideo = 0;
};
