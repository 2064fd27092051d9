#pragma once

#include "frames/frameburner.h"

struct AVFrame;

/** Describes an AVFrame to a FrameBurner. The frame must outlive this. */
class AVFrameReader : public FrameBurner::Preparer
{
public:
    explicit AVFrameReader(AVFrame &frame);

    /** False if the frame's display matrix is not one of the eight orientations. */
    explicit operator bool() const { return m_bKnown; }
    const SubtitleFrame &Frame() const { return m_description; }

    /** Makes the frame writable. If its data had to be copied for that, @p frame gets the new planes. */
    bool Prepare(SubtitleFrame &frame) override;

private:
    bool ReadOrientation();
    void ReadPlanes(SubtitleFrame &frame) const;

    AVFrame &m_frame;
    SubtitleFrame m_description = {};
    bool m_bKnown;
};
