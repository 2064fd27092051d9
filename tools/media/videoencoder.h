#pragma once

#include "commandline/options.h"
#include "media/ffmpegptr.h"
#include "media/hardwareframes.h"
#include "media/hdrmetadata.h"
#include "media/orientation.h"

#include <vector>

/** Properties of the source that the encoder has to keep. */
struct VideoTraits {
    AVRational timeBase = {0, 1};
    AVRational frameRate = {0, 1};
    AVRational sampleAspectRatio = {0, 1};
    AVFieldOrder fieldOrder = AV_FIELD_UNKNOWN;
    // The orientation of the frames if they are to be turned before encoding, else none.
    Orientation turn = Orientation(nullptr);
    HdrMetadata hdr;
};

/** Encodes frames whose time stamps are in the source's time base. */
class VideoEncoder
{
public:
    /**
     * Throws a Failure if there is no encoder for the container or the user's choice.
     * @param container  decides the codec if the user names none.
     * @param choice     must outlive the encoder, like the container.
     * @param strFile    the output's name, for errors.
     */
    VideoEncoder(const AVOutputFormat &container, const EncoderChoice &choice, const std::string &strFile);

    ~VideoEncoder();

    VideoEncoder(const VideoEncoder &) = delete;
    VideoEncoder &operator=(const VideoEncoder &) = delete;

    /** Chooses the pixel format and opens the encoder. @param first  a frame as decoded, before conversion. */
    void Open(const AVFrame &first, const VideoTraits &traits);

    /** The pixel format of the frames for Send(). */
    AVPixelFormat Format() const { return m_format; }
    const AVCodecContext &Context() const { return *m_pContext; }

    /** Whether the bit stream has the source's HDR metadata. */
    bool WritesHdr() const { return m_bWritesHdr; }

    /** The time base of the packets. */
    AVRational TimeBase() const;

    /** Null ends the stream. */
    void Send(FramePtr pFrame);

    /** @return false if another frame has to be sent first, or the stream has ended. */
    bool Receive(AVPacket &packet);

private:
    struct Timing {
        int64_t nEncoder;
        int64_t nSource;
        int64_t nDuration;
    };

    void ListCandidates();
    void AddCandidates(AVCodecID id);
    void OpenAs(const AVCodec &codec, const AVFrame &first, const VideoTraits &traits);
    void CheckOpened(const AVCodec &codec, int nResult) const;
    void SetTiming(const AVCodec &codec, const VideoTraits &traits);
    void SetRate(const AVCodec &codec);
    /** @param pOurs  subburn's option, for errors. @param pName  the encoder's. */
    void SetOption(const char *pOurs, const char *pName, const std::string &strValue);
    std::string PresetFor(const AVCodec &codec, const char *pOption) const;
    AVPixelFormat ChooseFormat(const AVCodec &codec, AVPixelFormat source, bool bTurned) const;
    void OpenWithOptions(const AVCodec &codec);
    void SetUsualOptions(const AVCodec &codec);
    void Stamp(AVFrame &frame);

    const AVOutputFormat &m_container;
    const EncoderChoice &m_choice;
    std::string m_strFile;
    std::vector<const AVCodec *> m_listCandidates;
    std::optional<HardwareFrames> m_hardware;
    CodecPtr m_pContext;
    AVPixelFormat m_format = AV_PIX_FMT_NONE;
    VideoTraits m_traits;
    bool m_bWritesHdr = false;
    // The output stores no times, only numbers its frames, so packets keep the encoder's own time stamps.
    bool m_bEven = false;
    int64_t m_nLast = INT64_MIN;
    std::vector<Timing> m_listTiming;
};
