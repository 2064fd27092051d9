#pragma once

#include "frames/samplekernel.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** Samples in an array are worked on in steps of so many; arrays have room for whole steps. */
constexpr std::size_t MixStep = 32;
/** Samples that are worked on at once, at most. */
constexpr std::size_t MixChunk = 512;

/** A sample for each pixel: as wide as their elements, or 10 bits of one of 4 bytes. */
using MixSamples = std::array<std::uint16_t, MixChunk>;

/** How samples lie in a row: those of each step are one of each channel. */
struct RowForm {
    int nElementBytes;         ///< 1, 2, or 4 for three channels in each element
    int nStep;                 ///< elements, each of another channel; 1 with 4 bytes
    std::array<int, 3> shifts; ///< with 4 bytes: the bits below those of a channel

    bool IsPacked() const { return nElementBytes == 4; }
    std::ptrdiff_t Bytes() const { return std::ptrdiff_t{nElementBytes} * nStep; }
};
/** Bits of a channel of elements of 4 bytes. */
constexpr std::uint32_t PackedMask = 0x3FF;
/** Of each channel. */
using Channels = std::array<MixSamples, 4>;

/**
 * Numbers of a format's samples. A sample is worked on as a signed number of 16 bits: the highest bit is the sample's, with half of the
 * range taken off, so that a pair's middle is 0. Weights and shares have 15 fractional bits.
 */
struct MixSettings {
    bool bAsRgb24;                                   ///< truncated as in RGB24, see MixKernel
    int nUp;                                         ///< from the sample's highest bit in its element to bit 15
    std::uint16_t nMask;                             ///< the sample's bits then
    std::array<std::int16_t, 2> single;              ///< weights of the pair in the single component
    std::array<std::array<std::int16_t, 2>, 2> pair; ///< of the pair in itself, beyond that its two change places

    /** Half of a code value. */
    int Half() const { return (nMask & -nMask) / 2; }
};

/** In lists of shares, a sample that stays as it is. */
constexpr std::int16_t Untouched = -1;

/** What is mixed into samples. The bases are of the components in turn. */
struct MixLists {
    std::array<const std::uint16_t *, 4> bases; ///< the colour times its weight, a signed number except as in RGB24
    const std::int16_t *pRest;                  ///< how much stays of what is exchanged, or Untouched
    const std::int16_t *pKeep;                  ///< how much stays as it was; null for nothing
};

/** Text of one weight: what its pixels mix into so many components. */
struct InkMix {
    int nComponents;
    std::array<std::uint16_t, 4> text, outline; ///< bases
    std::int16_t nRest;
};

/** Room for the lists of a chunk. */
struct InkMixLists {
    std::array<MixSamples, 4> listBases;
    std::array<std::int16_t, MixChunk> listRest, listKeep;

    MixLists Of(bool isMeans) const
    {
        return {{listBases[0].data(), listBases[1].data(), listBases[2].data(), listBases[3].data()},
                listRest.data(),
                isMeans ? listKeep.data() : nullptr};
    }
};

/** Pixels of a block that is mixed. */
constexpr int MixBlock = 32;

/**
 * Mixing into samples. All kernels give the same. Each product is rounded to nearest, and sums end where the numbers
 * do. As in RGB24, bases and rests are in 255ths, and new = (base + rest * exchanged) / 255, truncated.
 *
 * Counts of samples are whole MixSteps.
 */
struct MixKernel {
    /** Reads the channels of a row. */
    void (*Split)(const std::uint8_t *row, std::size_t count, const RowForm &form, Channels &channels);
    /** Writes them. */
    void (*Join)(const Channels &channels, std::size_t count, const RowForm &form, std::uint8_t *row);

    /** Makes the lists of neighbouring blocks of MixBlock pixels. */
    void (*SpreadSamples)(const InkSamples *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists);
    /** The same of the MeanSamples of each block. */
    void (*SpreadMeans)(const InkMeans *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists);

    /**
     * What pairs add to single components: first * weight + second * weight.
     * @param twice  each pair belongs to two pixels
     */
    void (*Tint)(const MixSamples &first, const MixSamples &second, std::size_t count, bool twice,
                 const MixSettings &settings, MixSamples &tints);
    /** new = base + rest * (old + tint). @param tints  null for none */
    void (*MixSingle)(MixSamples &samples, const MixSamples *tints, std::size_t count, const std::uint16_t *bases,
                      const std::int16_t *rests, const MixSettings &settings);
    /** new = base + keep * old + rest * exchanged, of the lists' bases from number @p base on. */
    void (*MixPair)(MixSamples &first, MixSamples &second, std::size_t count, const MixLists &lists, std::size_t base,
                    const MixSettings &settings);
};

/** For any processor. */
const MixKernel &PortableMixKernel();

/** For this processor: the one of its best instruction set, or the portable one where there are no vectors. */
const MixKernel &BestMixKernel();
