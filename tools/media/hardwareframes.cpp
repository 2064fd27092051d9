#include "media/hardwareframes.h"

#include "commandline/failure.h"

extern "C" {
#include <libavutil/hwcontext.h>
}

namespace
{

// Frames on the device: enough for those that encoders hold back.
const int PoolFrames = 32;

[[noreturn]] void Refuse(const std::string &strName, const std::string &strReason)
{
    throw Failure(ExitCode::Output, "--hwaccel " + strName + ": " + strReason);
}

} // namespace

HardwareFrames::HardwareFrames(const std::string &strName, const AVCodec &codec) : m_strName(strName)
{
    // The nvenc encoders run on cuda devices.
    const AVHWDeviceType type = av_hwdevice_find_type_by_name(strName == "nvenc" ? "cuda" : strName.c_str());
    if (type == AV_HWDEVICE_TYPE_NONE)
        throw Failure(ExitCode::Usage, "--hwaccel: this FFmpeg knows no hardware named \"" + strName + "\"");
    for (int n = 0; const AVCodecHWConfig *pConfig = avcodec_get_hw_config(&codec, n); ++n) {
        if (pConfig->device_type == type && (pConfig->methods & AV_CODEC_HW_CONFIG_METHOD_HW_FRAMES_CTX) != 0)
            m_format = pConfig->pix_fmt;
    }
    if (m_format == AV_PIX_FMT_NONE)
        throw Failure(ExitCode::Usage,
                      "--hwaccel: the encoder " + std::string(codec.name) + " does not work on " + strName);
    AVBufferRef *pDevice = nullptr;
    const int nResult = av_hwdevice_ctx_create(&pDevice, type, nullptr, nullptr, 0);
    if (nResult < 0)
        Refuse(strName, "there is no device that can be opened: " + AvReason(nResult));
    m_pDevice.reset(pDevice);
}

void HardwareFrames::SetUp(AVCodecContext &context, AVPixelFormat software)
{
    m_pFrames = Checked(BufferPtr(av_hwframe_ctx_alloc(m_pDevice.get())));
    auto &frames = *reinterpret_cast<AVHWFramesContext *>(m_pFrames->data);
    frames.format = m_format;
    frames.sw_format = software;
    frames.width = context.width;
    frames.height = context.height;
    frames.initial_pool_size = PoolFrames;
    const int nResult = av_hwframe_ctx_init(m_pFrames.get());
    if (nResult < 0)
        Refuse(m_strName, "the device has no memory for these frames: " + AvReason(nResult));
    context.pix_fmt = m_format;
    context.hw_frames_ctx = Checked(av_buffer_ref(m_pFrames.get()));
}

void HardwareFrames::Upload(FramePtr &pFrame) const
{
    FramePtr pUploaded = NewFrame();
    int nResult = av_hwframe_get_buffer(m_pFrames.get(), pUploaded.get(), 0);
    if (nResult >= 0)
        nResult = av_hwframe_transfer_data(pUploaded.get(), pFrame.get(), 0);
    if (nResult >= 0)
        nResult = av_frame_copy_props(pUploaded.get(), pFrame.get());
    if (nResult < 0)
        Refuse(m_strName, "a frame does not get to the device: " + AvReason(nResult));
    pFrame = std::move(pUploaded);
}
