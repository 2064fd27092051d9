#pragma once

#include "framering.h"

#include <cstdint>
#include <string>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavutil/frame.h>
}

/** A graph of FFmpeg filters through which frames of a ring go, and are drawn in where they lie. */
class FilterHost
{
public:
    /** @param filters  between [main] and [out]; a second input, of RGBA pictures, is [picture]. */
    FilterHost(int width, int height, const std::string &filters);
    ~FilterHost();
    FilterHost(const FilterHost &) = delete;
    FilterHost &operator=(const FilterHost &) = delete;

    /** Gives the one picture of the second input; it stays. */
    void SetPicture(const std::uint8_t *rgba);
    /** @return whether the filters drew in the frame itself, not in a copy. */
    bool Process(std::int64_t ms);

private:
    FrameRing &m_ring;
    int m_nWidth;
    int m_nHeight;
    AVFilterGraph *m_graph;
    AVFrame *m_frame;
};
