#include "media/frameconverter.h"

FrameConverter::FrameConverter(int nWidth, int nHeight, AVPixelFormat format, const Orientation &turn) :
    m_nWidth(nWidth), m_nHeight(nHeight), m_format(format)
{
    if (!turn.Alike())
        m_turner.emplace(turn);
}

void FrameConverter::SetColors(AVFrame &frame, const AVFrame &source) const
{
    const bool bFromRgb = IsRgb(static_cast<AVPixelFormat>(source.format));
    if (IsRgb(m_format)) {
        frame.colorspace = AVCOL_SPC_RGB;
        frame.color_range = AVCOL_RANGE_JPEG;
    } else if (IsFullRangeFormat(m_format) || IsFullRangeFormat(static_cast<AVPixelFormat>(source.format))) {
        frame.color_range = AVCOL_RANGE_JPEG;
    } else if (bFromRgb) {
        frame.color_range = AVCOL_RANGE_MPEG;
    }
    if (bFromRgb && !IsRgb(m_format)) {
        frame.colorspace = AVCOL_SPC_UNSPECIFIED;
        frame.colorspace = PictureFormat::Of(frame).matrix;
    }
}

void FrameConverter::Convert(FramePtr &pFrame)
{
    Scale(pFrame);
    if (m_turner)
        m_turner->Turn(pFrame);
}

void FrameConverter::Scale(FramePtr &pFrame)
{
    if (pFrame->width == m_nWidth && pFrame->height == m_nHeight && pFrame->format == m_format)
        return;
    FramePtr pConverted = m_pool.Get(m_nWidth, m_nHeight, m_format);
    if (av_frame_copy_props(pConverted.get(), pFrame.get()) < 0)
        throw std::bad_alloc();
    SetColors(*pConverted, *pFrame);
    const PictureFormat from = PictureFormat::Of(*pFrame);
    if (!m_pScaler || !(from == m_from)) {
        m_pScaler = MakeScaler(from, PictureFormat::Of(*pConverted));
        m_from = from;
    }
    sws_scale(m_pScaler.get(), pFrame->data, pFrame->linesize, 0, pFrame->height, pConverted->data,
              pConverted->linesize);
    pFrame = std::move(pConverted);
}
