#pragma once

#include "mediaitem.h"
#include "options.h"

#include <deque>

/** Opens a media file and decodes its video stream; the packets of all other streams come as they are. */
class MediaInput
{
public:
    /** Throws a Failure when there is no video stream to decode. */
    explicit MediaInput(const std::string &strFile);

    /** The stream that the subtitles are taken from, -1 where they come from another file. */
    int StreamOf(const SubtitleSource &subtitles) const;

    /** Streams that are not wanted are not read. */
    void Ignore(int nStream);

    /** @return false at the end. */
    bool Next(MediaItem &item);

    /** Goes to where the frames that Next() gives lead up to a time of the video stream. */
    void SeekBefore(int64_t nTimeStamp);

    const std::string &File() const { return m_strFile; }
    AVFormatContext &Format() const { return *m_pFormat; }
    AVStream &Video() const { return *m_pVideo; }

    /** Where the file's time begins, in the time base of the video stream. */
    int64_t Origin() const;

    /** Where the display of a frame ends. */
    int64_t TimeAfter(const AVFrame &frame) const;

    AVRational FrameRate() const;
    AVRational SampleAspectRatio(AVFrame *pFrame) const;

    /** Where the display of the last frame ended, of the file's own time, in microseconds. */
    int64_t End() const;

    /** How much later it ends by the container's word, likewise; 0 where it does not say, or the end was not reached. */
    int64_t MissingTime() const;

    /** Frames and packets that did not decode, or not well. */
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

    std::string m_strFile;
    DemuxerPtr m_pFormat;
    CodecPtr m_pDecoder;
    AVStream *m_pVideo = nullptr;
    PacketPtr m_pPacket = NewPacket();
    std::deque<MediaItem> m_listPending;
    int64_t m_nNextTimeStamp = AV_NOPTS_VALUE;
    int64_t m_nLastTimeStamp = AV_NOPTS_VALUE;
    int64_t m_nLongest = 0;
    int64_t m_nDamaged = 0;
    bool m_bDraining = false;
    bool m_bRead = false;
};
