#pragma once

#include "commandline/options.h"
#include "media/ffmpegptr.h"

extern "C" {
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
}

#include <functional>

/** Decodes an audio stream and encodes it in a format that a container can hold. */
class SoundEncoder
{
public:
    using Sink = std::function<void(AVPacket &packet)>;

    /** The encoder that the user chose, else the default one for the container; null if FFmpeg has none. */
    static const AVCodec *EncoderFor(const AVOutputFormat &container, const SoundChoice &choice);

    /**
     * Throws a Failure if the audio cannot be decoded or encoded.
     * @param strFile  the output's name, for errors.
     */
    SoundEncoder(const AVStream &source, const AVOutputFormat &container, const AVCodec &codec,
                 const SoundChoice &choice, const std::string &strFile);

    const AVCodecContext &Context() const { return *m_pEncoder; }

    /**
     * @param pPacket  of the source; null ends the stream.
     * @param sink     receives packets in the encoder's time base.
     */
    void Encode(const AVPacket *pPacket, const Sink &sink);

private:
    struct FreeResampler {
        void operator()(SwrContext *pContext) const { swr_free(&pContext); }
    };

    struct FreeFifo {
        void operator()(AVAudioFifo *pFifo) const { av_audio_fifo_free(pFifo); }
    };

    void OpenDecoder(const AVStream &source);
    void OpenEncoder(const AVOutputFormat &container, const AVCodec &codec, const SoundChoice &choice);
    void SetUpResampler(AVFrame &frame);
    void Resample(AVFrame *pFrame, const Sink &sink);
    FramePtr NewSamples(int nSamples) const;
    void SetTime(const AVFrame &frame);
    void Send(const AVFrame *pFrame, const Sink &sink);
    [[noreturn]] void Refuse(const std::string &strWhat, int nResult) const;

    std::string m_strFile;
    CodecPtr m_pDecoder;
    CodecPtr m_pEncoder;
    std::unique_ptr<SwrContext, FreeResampler> m_pResampler;
    std::unique_ptr<AVAudioFifo, FreeFifo> m_pFifo;
    PacketPtr m_pPacket = NewPacket();
    int64_t m_nNext = AV_NOPTS_VALUE;
};
