#pragma once

#include <array>

using Rgb = std::array<double, 3>;

/** Converts sRGB colours for HDR frames (PQ or HLG). */
class HdrColor
{
public:
    HdrColor() = default;

    /**
     * Returns false for an unknown transfer or unknown primaries.
     * @param transfer  AVColorTransferCharacteristic, PQ or HLG
     * @param primaries  AVColorPrimaries
     * @param white  level of white in cd/m2
     */
    bool Set(int transfer, int primaries, double white);

    /** @param color  R'G'B' of sRGB, 0 to 1. @return R'G'B' of the frame, 0 to 1. */
    Rgb Code(const Rgb &color) const;

private:
    std::array<Rgb, 3> m_fromSrgb = {}; ///< linear sRGB to the linear primaries of the frame
    bool m_bHlg = false;
    double m_dWhite = 0;
};
