#pragma once

#include "support/planeframe.h"

#include <fuzzer/FuzzedDataProvider.h>

/** A host's description of a frame, right or wrong, and how the planes lie in memory. */
class Scene
{
public:
    /** @param width, height  of the handle; some frames have another size */
    Scene(FuzzedDataProvider &input, int width, int height);

    /** Picks another value for one of the members, or for the memory, or for nothing. */
    void Change(FuzzedDataProvider &input);

    /** Planes exactly as long as needed, so that AddressSanitizer reports writes past their end. */
    PlaneFrame Planes() const { return {m_format, m_nWidth, m_nHeight, m_memory, m_nSeed}; }
    SubtitleFrame Record(PlaneFrame &planes) const;
    /** The record of a frame that is not refused, with defaults in place of unspecified members. */
    SubtitleFrame Literal(PlaneFrame &planes) const;

    bool IsHdr() const;
    /** True if the frame must be refused for a handle of that size. */
    bool IsWrong(int width, int height) const;
    /** True if the header leaves open whether such a frame is refused. */
    bool IsOpen() const;
    /** True if FFmpeg's enumerations can hold every member's value, so that an AVFrame can have them. */
    bool IsForAVFrame() const { return m_flaw != Flaw::Member && m_flaw != Flaw::Format; }

private:
    enum class Flaw { None, Plane, Row, Size, Format, Member };

    void PickMember(FuzzedDataProvider &input, int member);
    void PickMemory(FuzzedDataProvider &input);
    /** Makes it a right frame of the handle's size, then perhaps picks a flaw. */
    void Complete(FuzzedDataProvider &input);
    void PickFlaw(FuzzedDataProvider &input);
    bool IsRgb() const;
    bool IsJpeg() const;
    bool IsMatrixKnown() const;
    bool ArePrimariesKnown() const;

    AVPixelFormat m_format; ///< of the planes; the record may say another
    int m_nShownWidth;      ///< the handle's
    int m_nShownHeight;
    int m_nWidth = 0; ///< of the planes
    int m_nHeight = 0;
    PlaneMemory m_memory;
    unsigned m_nSeed = 0;
    SubtitleFrame m_usual = {}; ///< the picked members, without a flaw
    SubtitleFrame m_record = {};
    Flaw m_flaw = Flaw::None;
    int m_nFlawed = 0; ///< plane with the flaw
};
