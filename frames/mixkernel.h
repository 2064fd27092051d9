#pragma once

#include "frames/samplekernel.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** Samples are processed in steps of this many. Arrays have room for whole steps. */
constexpr std::size_t MixStep = 32;
/** Most samples that are processed at once. */
constexpr std::size_t MixChunk = 512;

/** One channel of a chunk: elements of 1 or 2 bytes as they are stored, or 10 bits of elements of 4 bytes. */
using MixSamples = std::array<std::uint16_t, MixChunk>;

/** How samples lie in a row: the channels alternate, with one sample of each per step. */
struct RowForm {
    int nElementBytes;         ///< 1, 2, or 4 for three channels in each element
    int nStep;                 ///< elements per step, one of each channel; 1 with 4 bytes
    std::array<int, 3> shifts; ///< with 4 bytes: number of bits below each channel

    bool IsPacked() const { return nElementBytes == 4; }
    std::ptrdiff_t Bytes() const { return std::ptrdiff_t{nElementBytes} * nStep; }
};
/** Bits of one channel in an element of 4 bytes. */
constexpr std::uint32_t PackedMask = 0x3FF;
using Channels = std::array<MixSamples, 4>;

/**
 * How samples become the numbers that kernels calculate with. A number has 16 bits and a sign: the sample is shifted
 * until its highest bit is bit 15, then half of the range is subtracted, so that the middle of a pair becomes 0.
 * Weights and shares have 15 fractional bits.
 */
struct MixSettings {
    bool bAsRgb24;                                   ///< truncate as in RGB24, see MixKernel
    int nUp;                                         ///< bits by which an element is shifted to become a number
    std::uint16_t nMask;                             ///< the sample's bits after the shift
    std::array<std::int16_t, 2> single;              ///< weights of the pair in the single component
    std::array<std::array<std::int16_t, 2>, 2> pair; ///< weights of the pair in itself, in addition to the swap

    /** Half a step of code values, as a number. */
    int Half() const { return (nMask & -nMask) / 2; }
};

/** Marks a sample in a list of shares that is not drawn. */
constexpr std::int16_t Untouched = -1;

/** What is mixed into samples: an entry for each. There is a list of bases for each component. */
struct MixLists {
    std::array<const std::uint16_t *, 4> bases; ///< colour times weight; signed numbers unless bAsRgb24
    const std::int16_t *pRest;                  ///< share of the old sample with red and blue swapped, or Untouched
    const std::int16_t *pKeep;                  ///< share of the old sample as it is; null if 0 for all
};

/** What the pixels of text mix into each component, if all have the same weight. */
struct InkMix {
    int nComponents;
    std::array<std::uint16_t, 4> text, outline; ///< bases
    std::int16_t nRest;
};

/** Storage for the lists of a chunk. */
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

/** Pixels of an InkSamples block in mixing. */
constexpr int MixBlock = 32;

/**
 * Mixes colours into samples. All kernels give the same result. Products are rounded to nearest, and sums saturate.
 * With bAsRgb24, bases and rests are in 255ths, and new = (base + rest * swapped) / 255, truncated.
 *
 * "swapped" is the old sample with red and blue swapped. Counts of samples are multiples of MixStep.
 */
struct MixKernel {
    /** Reads a row into channels. */
    void (*Split)(const std::uint8_t *row, std::size_t count, const RowForm &form, Channels &channels);
    /** Writes channels into a row. */
    void (*Join)(const Channels &channels, std::size_t count, const RowForm &form, std::uint8_t *row);

    /** Makes lists from neighbouring blocks of MixBlock pixels. */
    void (*SpreadSamples)(const InkSamples *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists);
    /** The same from blocks of MeanSamples chroma samples. */
    void (*SpreadMeans)(const InkMeans *blocks, std::size_t count, const InkMix &mix, InkMixLists &lists);

    /**
     * Computes what swapping red and blue adds to the single component: first * weight + second * weight.
     * @param twice  two pixels share a pair; each tint is written twice
     */
    void (*Tint)(const MixSamples &first, const MixSamples &second, std::size_t count, bool twice,
                 const MixSettings &settings, MixSamples &tints);
    /** new = base + rest * (old + tint). @param tints  null for none */
    void (*MixSingle)(MixSamples &samples, const MixSamples *tints, std::size_t count, const std::uint16_t *bases,
                      const std::int16_t *rests, const MixSettings &settings);
    /** new = base + keep * old + rest * swapped. @param base  number of the pair's first list in lists.bases */
    void (*MixPair)(MixSamples &first, MixSamples &second, std::size_t count, const MixLists &lists, std::size_t base,
                    const MixSettings &settings);
};

/** Runs on any processor. */
const MixKernel &PortableMixKernel();

/** The one for the best instruction set of this processor, or the portable one if it has no vectors. */
const MixKernel &BestMixKernel();
