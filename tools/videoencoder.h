#pragma once

#include "ffmpegptr.h"
#include "hardwareframes.h"
#include "options.h"
#include "orientation.h"

#include <vector>

/** What the encoder has to keep of the source. */
struct VideoTraits {
    AVRational timeBase = {0, 1};
    AVRational frameRate = {0, 1};
    AVRational sampleAspectRatio = {0, 1};
    AVFieldOrder fieldOrder = AV_FIELD_UNKNOWN;
    // How the frames lie where they have to be turned first.
    Orientation turn = Orientation(nullptr);
};

/** Encodes frames that come with time stamps of the source's time base. */
class VideoEncoder
{
public:
    /**
     * @param container  decides on the codec when the user does not.
     * @param strFile    the output's name, for errors.
     */
    VideoEncoder(const AVOutputFormat &container, const EncoderChoice &choice, const std::string &strFile);

    ~VideoEncoder();

    VideoEncoder(const VideoEncoder &) = delete;
    VideoEncoder &operator=(const VideoEncoder &) = delete;

    /** Chooses the pixel format and opens the encoder. The frame is one as it comes from the decoder. */
    void Open(const AVFrame &first, const VideoTraits &traits);

    /** Of the frames that Send() takes. */
    AVPixelFormat Format() const { return m_format; }
    const AVCodecContext &Context() const { return *m_pContext; }

    /** The time base of the packets. */
    AVRational TimeBase() const;

    /** Null ends the stream. */
    void Send(FramePtr pFrame);

    /** @return false when the next frame has to come first. */
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
    /** @param pOurs  the option that the user gave. */
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
    // The output only numbers its frames, so the encoder's own time stamps go through.
    bool m_bEven = false;
    int64_t m_nLast = INT64_MIN;
    std::vector<Timing> m_listTiming;
};
