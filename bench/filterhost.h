#pragma once

#include "framering.h"

#include <cstdint>
#include <string>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavutil/frame.h>
}

/** A graph of FFmpeg filters that draws into the frames of a ring, in place. */
class FilterHost
{
public:
    /** @param filters  graph from [main] to [out]; a second input, of RGBA pictures, is [picture] */
    FilterHost(int width, int height, const std::string &filters);
    ~FilterHost();
    FilterHost(const FilterHost &) = delete;
    FilterHost &operator=(const FilterHost &) = delete;

    /** Sets the only picture of the second input, which is shown from then on. */
    void SetPicture(const std::uint8_t *rgba);
    /** @return whether the filters drew into the frame itself and not into a copy */
    bool Process(std::int64_t ms);

private:
    FrameRing &m_ring;
    int m_nWidth;
    int m_nHeight;
    AVFilterGraph *m_graph;
    AVFrame *m_frame;
};
