#pragma once

#include "frames/chromasite.h"
#include "frames/framecolors.h"
#include "frames/mixkernel.h"
#include "frames/mixrows.h"

#include <array>
#include <cstdint>

/** Converts colours and weights of pixels to the numbers that MixKernel takes. */
class MixNumbers
{
public:
    /** Sum of the weights of all taps of a sample. */
    static constexpr int AllTaps = Taps::Whole * Taps::Whole;

    /** A sample's entries in MixLists. */
    struct Part {
        std::array<std::uint16_t, 4> bases;
        std::int16_t nRest, nKeep;
    };

    /** Adds up what the pixels of a sample mix into it. */
    class Sum
    {
    public:
        /** Adds a pixel that is not drawn. */
        void Keep(int taps) { m_nKeep += taps; }
        bool IsUntouched() const { return m_nKeep == AllTaps; }

    private:
        friend class MixNumbers;
        std::array<std::int64_t, 4> m_codes = {};
        std::int32_t m_nRest = 0;
        std::int32_t m_nKeep = 0;
    };

    void Set(const PixelFormat &format, bool isAsRgb24);
    MixSettings Settings(const RedBlueExchange &exchange) const;

    /** Adds a pixel that is drawn. @param taps  weight of the pixel in the sample, of AllTaps */
    void Add(Sum &sum, const MixPass &pass, const FrameColor &color, int weight, int taps) const
    {
        const std::int64_t part = std::int64_t{taps} * weight;
        for (int i = 0; i < pass.nComponents; ++i)
            sum.m_codes[i] += part * (color.fine[pass.components[i]] - m_nMiddle);
        sum.m_nRest += taps * (Opaque - weight);
    }
    Part PartOf(const Sum &sum, const MixPass &pass) const;

private:
    bool m_bAsRgb24 = false;
    int m_nDepth = 8;
    int m_nUp = 0;
    std::int32_t m_nMiddle = 0; ///< fine code value that becomes number 0
};
