#pragma once

#include "commandline/options.h"
#include "media/mediaitem.h"
#include "media/seireader.h"

#include <deque>
#include <optional>

/** Reads a media file: decodes its first video stream and passes on the packets of all other streams. */
class MediaInput
{
public:
    /** Throws a Failure if the file cannot be opened or has no video that can be decoded. */
    explicit MediaInput(const std::string &strFile);

    /** Index of the stream that the subtitles are taken from, -1 if they come from another file. */
    int StreamOf(const SubtitleSource &subtitles) const;

    /** Makes the demuxer skip a stream. */
    void Ignore(int nStream);

    /** @return false at the end. */
    bool Next(MediaItem &item);

    /** Seeks so that Next() gives a frame at or before a time of the video stream, or begins with the first frame. */
    void SeekBefore(int64_t nTimeStamp);

    const std::string &File() const { return m_strFile; }
    AVFormatContext &Format() const { return *m_pFormat; }
    AVStream &Video() const { return *m_pVideo; }

    /** OriginOf() in the time base of the video stream. */
    int64_t Origin() const;

    /** When the display of a frame ends, in the time base of the video stream. */
    int64_t TimeAfter(const AVFrame &frame) const;

    AVRational FrameRate() const;
    AVRational SampleAspectRatio(AVFrame *pFrame) const;

    /** When the display of the last frame ended, in microseconds of the file's own time. */
    int64_t End() const;

    /**
     * How much later the video ends according to the container, in microseconds; 0 if the container does not say, the
     * end was not reached, or the difference is no longer than the longest frame.
     */
    int64_t MissingTime() const;

    /** Number of frames and packets that could not be decoded, or only with errors. */
    int64_t Damaged() const { return m_nDamaged; }

private:
    void Open();
    void OpenDecoder();
    int64_t PromisedEnd() const;
    bool Receive(MediaItem &item);
    bool Feed(MediaItem &item);
    bool ReadOn(MediaItem &item);
    bool TrySeek(int64_t nTarget, int nFlags = 0);
    void Rewind(int64_t nBegin);
    bool LeadsUpTo(int64_t nTimeStamp);
    void SetTimeStamp(AVFrame &frame);
    void KeepMatrix(AVFrame &frame);

    std::string m_strFile;
    DemuxerPtr m_pFormat;
    CodecPtr m_pDecoder;
    AVStream *m_pVideo = nullptr;
    std::optional<SeiReader> m_sei; ///< set once m_pVideo is
    BufferPtr m_pMatrix;            ///< display matrix of the last key frame; null if it has none
    PacketPtr m_pPacket = NewPacket();
    std::deque<MediaItem> m_listPending;
    int64_t m_nNextTimeStamp = AV_NOPTS_VALUE;
    int64_t m_nLastTimeStamp = AV_NOPTS_VALUE;
    int64_t m_nLongest = 0;
    int64_t m_nDamaged = 0;
    bool m_bDraining = false;
    bool m_bRead = false;
};
