#include "frames/avframereader.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <cstring>

namespace
{

bool IsInterlaced(const AVFrame &frame)
{
#ifdef AV_FRAME_FLAG_INTERLACED
    return (frame.flags & AV_FRAME_FLAG_INTERLACED) != 0;
#else
    return frame.interlaced_frame != 0;
#endif
}

} // namespace

AVFrameReader::AVFrameReader(AVFrame &frame) : m_frame(frame), m_bKnown(ReadOrientation())
{
    ReadPlanes(m_description);
    m_description.width = frame.width;
    m_description.height = frame.height;
    m_description.format = frame.format;
    m_description.colorspace = frame.colorspace;
    m_description.color_range = frame.color_range;
    m_description.color_primaries = frame.color_primaries;
    m_description.color_trc = frame.color_trc;
    m_description.chroma_location = frame.chroma_location;
    m_description.interlaced = IsInterlaced(frame) ? 1 : 0;
}

bool AVFrameReader::ReadOrientation()
{
    const AVFrameSideData *data = av_frame_get_side_data(&m_frame, AV_FRAME_DATA_DISPLAYMATRIX);
    if (!data)
        return true;
    std::int32_t matrix[9];
    if (data->size < sizeof matrix)
        return false;
    std::memcpy(matrix, data->data, sizeof matrix);
    // The display matrix shows column p, row q of the frame at column a p + c q, row b p + d q.
    const std::int32_t a = matrix[0];
    const std::int32_t b = matrix[1];
    const std::int32_t c = matrix[3];
    const std::int32_t d = matrix[4];
    const bool isTransposed = a == 0 && d == 0;
    if (isTransposed ? b == 0 || c == 0 : b != 0 || c != 0 || a == 0 || d == 0)
        return false;
    m_description.orientation = (isTransposed ? SUBTITLE_ORIENTATION_TRANSPOSED : 0) |
                                ((isTransposed ? c : a) < 0 ? SUBTITLE_ORIENTATION_MIRRORED : 0) |
                                ((isTransposed ? b : d) < 0 ? SUBTITLE_ORIENTATION_UPSIDE_DOWN : 0);
    return true;
}

void AVFrameReader::ReadPlanes(SubtitleFrame &frame) const
{
    for (int i = 0; i < 4; ++i) {
        frame.data[i] = m_frame.data[i];
        frame.linesize[i] = m_frame.linesize[i];
    }
}

bool AVFrameReader::Prepare(SubtitleFrame &frame)
{
    if (m_frame.buf[0] && !av_frame_is_writable(&m_frame)) {
        if (av_frame_make_writable(&m_frame) < 0)
            return false;
        ReadPlanes(frame);
    }
    return true;
}
