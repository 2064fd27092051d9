#pragma once

#include "ffmpegptr.h"

/** The frames of a hardware encoder, which lie in memory of its device. */
class HardwareFrames
{
public:
    /**
     * Throws a Failure where there is no such device, or the encoder does not work on one.
     * @param strName  as FFmpeg's encoders end: vaapi, nvenc, qsv and so on.
     */
    HardwareFrames(const std::string &strName, const AVCodec &codec);

    /** Makes the encoder take frames that were uploaded; width and height are set already. */
    void SetUp(AVCodecContext &context, AVPixelFormat software);

    void Upload(FramePtr &pFrame) const;

private:
    using BufferPtr = std::unique_ptr<AVBufferRef, FreeByAddress<av_buffer_unref>>;

    std::string m_strName;
    AVPixelFormat m_format = AV_PIX_FMT_NONE;
    BufferPtr m_pDevice;
    BufferPtr m_pFrames;
};
