#pragma once

#include "frames/framecolors.h"
#include "frames/framelayout.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** Weight of an opaque pixel. */
constexpr std::int32_t Opaque = 255;

/** Most bytes of a row that a block of opaque ink spans. */
constexpr std::size_t InkBytes = 64;

/**
 * A block of neighbouring pixels in a row, each with a sample of its own: up to 64, in Fill() as many as fit into
 * InkBytes.
 */
struct InkSamples {
    int nRow;
    int nColumn;          ///< of the first pixel
    std::uint64_t nText;  ///< bit i: pixel i has the text's colour, else the outline's
    std::uint64_t nShown; ///< bit i: pixel i is drawn
};

/** What Fill() writes into the bytes of a block. */
struct InkPattern {
    int nPixelBytes;
    std::array<std::uint8_t, InkBytes> text, outline;
    std::array<std::uint8_t, InkBytes> bits; ///< the bits to overwrite; none after the last whole pixel
};

/** A colour's share of a chroma sample is counted in 16ths. */
constexpr int MeanShift = 4;
constexpr int MeanWhole = 1 << MeanShift;

constexpr std::size_t MeanSamples = 16;
/** A block of neighbouring chroma samples, each of which is the mean of several pixels. */
struct InkMeans {
    int nRow;
    int nFirst;                                    ///< number of the first sample
    std::array<std::uint8_t, MeanSamples> text;    ///< 16ths of the text's colour
    std::array<std::uint8_t, MeanSamples> outline; ///< 16ths of the outline's
};

/** Most rows of pixels that a chroma sample is the mean of. */
constexpr std::size_t MeanRows = 3;
/** The pixels whose means are a block's samples: sample i is the mean of bits 2 i to 2 i + 3 of each row. */
struct MeanBits {
    static constexpr std::uint64_t OfBlock = (std::uint64_t{1} << (2 * MeanSamples + 2)) - 1;

    int nRows;
    std::array<std::array<std::uint8_t, 4>, MeanRows> weights; ///< of a sample's bits; MeanWhole in all
    std::array<std::uint64_t, MeanRows> text, shown;           ///< as in InkBits; bits outside OfBlock are ignored
};

/** The code values of the two chroma components, and how their samples lie in rows. */
struct MeanPattern {
    int nPlanes;                                ///< 2: a plane for each component; 1: their samples alternate in a row
    std::array<std::uint16_t, 2> text, outline; ///< code values of the components
    int nShift;                                 ///< bits of an element below the sample
    std::uint16_t nMax;                         ///< largest code value
    std::uint16_t nOthers;                      ///< bits of an element that are not the sample's and stay
};

/**
 * Draws opaque text from flat lists of blocks. All kernels give the same bytes. Samples of a block that are not drawn
 * may be rewritten with their own value; nothing past the end of a row is read or written.
 */
struct SampleKernel {
    /** Overwrites the pixels that are shown. */
    void (*Fill)(const PlaneTarget &plane, const InkSamples *blocks, std::size_t count, const InkPattern &pattern);

    /** Computes the shares, in 16ths, of a block's samples. */
    void (*Weigh)(const MeanBits &bits, InkMeans &block);
    /**
     * Blends chroma: new = (text * its code + outline * its code + (16 - text - outline) * old + 8) / 16, truncated.
     * @param planes  pattern.nPlanes of them, of the same size
     */
    void (*Mean8)(const PlaneTarget *planes, const InkMeans *blocks, std::size_t count, const MeanPattern &pattern);
    /** The same for elements of 16 bits. */
    void (*Mean16)(const PlaneTarget *planes, const InkMeans *blocks, std::size_t count, const MeanPattern &pattern);
};

/** Runs on any processor. */
const SampleKernel &PortableSampleKernel();

/** The one for the best instruction set of this processor, or the portable one if it has no vectors. */
const SampleKernel &BestSampleKernel();
