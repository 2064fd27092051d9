#pragma once

#include "support/planeframe.h"

#include <fuzzer/FuzzedDataProvider.h>

/** A frame as a host describes it, right or wrong, and how its planes lie in memory. */
class Scene
{
public:
    /** For a handle's size; the frame has another size now and then. */
    Scene(FuzzedDataProvider &input, int width, int height);

    /** Another value for one of the members, or for none. */
    void Change(FuzzedDataProvider &input);

    /** Exactly as long as needed, so that AddressSanitizer sees what is written past an end. */
    PlaneFrame Planes() const { return {m_format, m_nWidth, m_nHeight, m_memory, m_nSeed}; }
    SubtitleFrame Record(PlaneFrame &planes) const;
    /** The record with nothing left open, of a frame that is not refused. */
    SubtitleFrame Literal(PlaneFrame &planes) const;

    bool IsHdr() const;
    /** The frame is to be refused for a handle of that size. */
    bool IsWrong(int width, int height) const;
    /** The header says neither that such a frame is refused, nor that it is not. */
    bool IsOpen() const;
    /** Every member has a value that FFmpeg's enumerations can hold, so that it can be a frame of FFmpeg's. */
    bool IsForAVFrame() const { return m_flaw != Flaw::Member && m_flaw != Flaw::Format; }

private:
    enum class Flaw { None, Plane, Row, Size, Format, Member };

    void PickMember(FuzzedDataProvider &input, int member);
    void PickMemory(FuzzedDataProvider &input);
    /** Makes it a frame of the handle's size that is right, and then perhaps a wrong one. */
    void Complete(FuzzedDataProvider &input);
    void PickFlaw(FuzzedDataProvider &input);
    bool IsRgb() const;
    bool IsJpeg() const;
    bool IsMatrixKnown() const;
    bool ArePrimariesKnown() const;

    AVPixelFormat m_format; ///< of the planes, whatever the record says
    int m_nShownWidth;      ///< the handle's
    int m_nShownHeight;
    int m_nWidth = 0; ///< of the planes
    int m_nHeight = 0;
    PlaneMemory m_memory;
    unsigned m_nSeed = 0;
    SubtitleFrame m_usual = {}; ///< what was picked, without a flaw
    SubtitleFrame m_record = {};
    Flaw m_flaw = Flaw::None;
    int m_nFlawed = 0; ///< the plane
};
