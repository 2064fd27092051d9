#pragma once

#include "frames/frameburner.h"

struct AVFrame;

/** Reads what a burner needs off a frame of FFmpeg's. */
class AVFrameReader : public FrameBurner::Preparer
{
public:
    explicit AVFrameReader(AVFrame &frame);

    /** False for an orientation that is none of the eight. */
    explicit operator bool() const { return m_bKnown; }
    const SubtitleFrame &Frame() const { return m_description; }

    /** Makes the frame writable. */
    bool Prepare(SubtitleFrame &frame) override;

private:
    bool ReadOrientation();
    void ReadPlanes(SubtitleFrame &frame) const;

    AVFrame &m_frame;
    SubtitleFrame m_description = {};
    bool m_bKnown;
};
