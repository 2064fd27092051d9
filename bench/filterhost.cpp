#include "filterhost.h"

#include <cstring>
#include <stdexcept>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/buffer.h>
#include <libavutil/log.h>
}

namespace
{

void Check(int result)
{
    if (result < 0)
        throw std::runtime_error("an FFmpeg filter failed");
}

} // namespace

FilterHost::FilterHost(int width, int height, const std::string &filters) :
    m_ring(FrameRing::Of(width, height)),
    m_nWidth(width),
    m_nHeight(height),
    m_graph(avfilter_graph_alloc()),
    m_frame(av_frame_alloc())
{
    av_log_set_level(AV_LOG_ERROR);
    m_graph->nb_threads = 1;
    const std::string main = "buffer@main=width=" + std::to_string(width) + ":height=" + std::to_string(height) +
                             ":pix_fmt=rgb24:time_base=1/1000:sar=1/1[main];";
    AVFilterInOut *inputs = nullptr;
    AVFilterInOut *outputs = nullptr;
    Check(avfilter_graph_parse2(m_graph, (main + filters + ";[out]buffersink@out").c_str(), &inputs, &outputs));
    Check(avfilter_graph_config(m_graph, nullptr));
}

FilterHost::~FilterHost()
{
    av_frame_free(&m_frame);
    avfilter_graph_free(&m_graph);
}

void FilterHost::SetPicture(const std::uint8_t *rgba)
{
    AVFilterContext *source = avfilter_graph_get_filter(m_graph, "buffer@picture");
    AVFilterLink *link = source->outputs[0];
    AVFrame *picture = av_frame_alloc();
    picture->width = link->w;
    picture->height = link->h;
    picture->format = link->format;
    picture->pts = 0;
    Check(av_frame_get_buffer(picture, 0));
    for (int row = 0; row < link->h; ++row)
        std::memcpy(picture->data[0] + static_cast<std::ptrdiff_t>(row) * picture->linesize[0],
                    rgba + static_cast<std::size_t>(row) * link->w * 4, static_cast<std::size_t>(link->w) * 4);
    Check(av_buffersrc_add_frame(source, picture));
    Check(av_buffersrc_close(source, 1, 0));
    av_frame_free(&picture);
}

bool FilterHost::Process(std::int64_t ms)
{
    std::uint8_t *pixels = m_ring.Next();
    m_frame->buf[0] = av_buffer_create(
        pixels, m_ring.FrameBytes(), [](void *, std::uint8_t *) {}, nullptr, 0);
    m_frame->data[0] = pixels;
    m_frame->linesize[0] = m_nWidth * 3;
    m_frame->width = m_nWidth;
    m_frame->height = m_nHeight;
    m_frame->format = AV_PIX_FMT_RGB24;
    m_frame->pts = ms;
    Check(av_buffersrc_add_frame(avfilter_graph_get_filter(m_graph, "buffer@main"), m_frame));
    Check(av_buffersink_get_frame(avfilter_graph_get_filter(m_graph, "buffersink@out"), m_frame));
    const bool inPlace = m_frame->data[0] == pixels;
    av_frame_unref(m_frame);
    return inPlace;
}
