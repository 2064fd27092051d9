#pragma once

#include "media/ffmpegptr.h"

/** Uploads frames to the memory of a hardware encoder's device. */
class HardwareFrames
{
public:
    /**
     * Throws a Failure if there is no such device, or the encoder does not work on one.
     * @param strName  the suffix of FFmpeg's encoder names: vaapi, nvenc, qsv and so on.
     */
    HardwareFrames(const std::string &strName, const AVCodec &codec);

    /** Makes the encoder take uploaded frames. Call with its width and height set, before opening it. */
    void SetUp(AVCodecContext &context, AVPixelFormat software);

    void Upload(FramePtr &pFrame) const;

private:
    using BufferPtr = std::unique_ptr<AVBufferRef, FreeByAddress<av_buffer_unref>>;

    std::string m_strName;
    AVPixelFormat m_format = AV_PIX_FMT_NONE;
    BufferPtr m_pDevice;
    BufferPtr m_pFrames;
};
