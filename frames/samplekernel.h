#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** Weight of a pixel that hides what is below it. */
constexpr std::int32_t Opaque = 255;

/** Bytes of a row that a block of ink takes at most, from its first pixel on. */
constexpr std::size_t InkBytes = 64;

/** Pixels of a row that have samples of their own: 64, or as many as there are whole ones in InkBytes. */
struct InkSamples {
    int nRow;
    int nColumn;          ///< of the first pixel
    std::uint64_t nText;  ///< bit i: pixel i has the text's colour, else the outline's
    std::uint64_t nShown; ///< bit i: pixel i is drawn
};

/** What such a block puts into its bytes. */
struct InkPattern {
    int nPixelBytes;
    std::array<std::uint8_t, InkBytes> text, outline;
    std::array<std::uint8_t, InkBytes> bits; ///< that belong to the colour; none after the last whole pixel
};

/** Of means, 16ths: how much of a sample comes of a colour. */
constexpr int MeanShift = 4;
constexpr int MeanWhole = 1 << MeanShift;

/** Chroma samples, each of which is a mean of several pixels. */
constexpr std::size_t MeanSamples = 16;
struct InkMeans {
    int nRow;
    int nFirst;                                    ///< sample
    std::array<std::uint8_t, MeanSamples> text;    ///< 16ths of the text's colour
    std::array<std::uint8_t, MeanSamples> outline; ///< 16ths of the outline's
};

/** Rows of pixels that a chroma sample is a mean of, at most. */
constexpr std::size_t MeanRows = 3;
/** The pixels that a block's samples are means of: sample i of bits 2 i to 2 i + 3 of each row. */
struct MeanBits {
    static constexpr std::uint64_t OfBlock = (std::uint64_t{1} << (2 * MeanSamples + 2)) - 1;

    int nRows;
    std::array<std::array<std::uint8_t, 4>, MeanRows> weights; ///< of the bits, MeanWhole in all
    std::array<std::uint64_t, MeanRows> text, shown;           ///< as in InkBits; those after OfBlock do not count
};

/** How code values of the two components lie in rows. */
struct MeanPattern {
    int nPlanes;                                ///< 2: a plane for each component; 1: their samples take turns in a row
    std::array<std::uint16_t, 2> text, outline; ///< code values of the components
    int nShift;                                 ///< bits of an element below the sample
    std::uint16_t nMax;                         ///< largest code value
    std::uint16_t nOthers;                      ///< bits of an element that stay
};

/**
 * The arithmetic of burning, on flat lists. All kernels give the same bytes. Samples of a block that are not drawn may be
 * written with what they hold; nothing after a row's end is read or written.
 */
struct SampleKernel {
    /** Puts the colours into the place of what was there. */
    void (*Fill)(const PlaneTarget &plane, const InkSamples *blocks, std::size_t count, const InkPattern &pattern);

    /** Finds the 16ths of a block. */
    void (*Weigh)(const MeanBits &bits, InkMeans &block);
    /**
     * Samples become (text * its code + outline * its code + (16 - text - outline) * old + 8) / 16, truncated.
     * @param planes  one or two, as the pattern says; two have the same size
     */
    void (*Mean8)(const PlaneTarget *planes, const InkMeans *blocks, std::size_t count, const MeanPattern &pattern);
    /** The same for elements of 16 bits. */
    void (*Mean16)(const PlaneTarget *planes, const InkMeans *blocks, std::size_t count, const MeanPattern &pattern);
};

/** For any processor. */
const SampleKernel &PortableSampleKernel();

/** For this processor: the one of its best instruction set, or the portable one where there are no vectors. */
const SampleKernel &BestSampleKernel();
