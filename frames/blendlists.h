#pragma once

#include "frames/framelayout.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

/** Bytes of a list that a span is filled up to a multiple of. */
constexpr std::size_t BlendBytes = 64;

/**
 * What becomes of the bytes of a plane: new = (base + rest * old) / 255, truncated; a rest of 255 with a base of 127 leaves a
 * byte as it is. Each span has bytes of its own in the lists, as many as fill whole BlendBytes; after its last these
 * leave the plane as it is.
 */
struct ByteBlend {
    std::vector<Span> listSpans;
    std::vector<std::uint16_t> listBases;
    std::vector<std::uint8_t> listRests;

    void Clear();
    /**
     * Adds a span and returns where its bytes begin in the lists.
     * @param isFilledIn  the caller fills in what becomes of all of them; else they all stay as they are.
     */
    std::size_t Add(int row, int first, int count, bool isFilledIn);

private:
    std::size_t m_nUsed = 0; ///< of the lists, which do not become smaller
};

/** The same of samples of more bits: new = (base + rest * old) / 65,536, truncated. */
struct SampleBlend {
    std::vector<Span> listSpans;
    std::vector<std::uint32_t> listBases;
    std::vector<std::uint32_t> listRests; ///< 0 to 65,536
};

/** What two colours put into the bytes of a pixel, or of a pair of chroma samples. */
struct ByteCodes {
    int nStep;                          ///< bytes a pixel
    std::array<bool, 4> bUsed;          ///< of these; the others stay as they are
    std::array<float, 4> text, outline; ///< code values
};

/**
 * What a sample's part of a list becomes: @p code is added, and @p rest of it stays. What the rounding of the rest takes or
 * adds is made up for as for a byte of middle size.
 */
inline void PutPart(float code, float rest, std::uint16_t &base, std::uint8_t &rounded)
{
    constexpr float Middle = 127.5F; // of a byte; also half of what the sum is divided by
    constexpr float Half = 0.5F;     // rounds numbers that are not negative
    const float whole = 255 * rest;
    rounded = static_cast<std::uint8_t>(whole + Half);
    base = static_cast<std::uint16_t>(255 * code + (whole - static_cast<float>(rounded)) * Middle + Middle);
}

/** All kernels give the same bytes, except that numbers of Put() may differ by 1. */
struct BlendBytesKernel {
    /** Bytes after a span may be written with what they hold; nothing after a row's end is read or written. */
    void (*Blend)(const PlaneTarget &plane, const ByteBlend &blend);
    /** Fills in lists for pixels with shares of two colours. What is not used stays as it is. */
    void (*Put)(const float *text, const float *outline, std::size_t count, const ByteCodes &codes,
                std::uint16_t *bases, std::uint8_t *rests);
    /** The shares of covered pixels, times @p weight, of which 1 is the whole: those of the text, and of the outline
     *  where it is not below the text. */
    void (*Share)(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, float weight,
                  float *textShares, float *outlineShares);
    /** The same, added to what is there. */
    void (*AddShare)(const std::uint8_t *text, const std::uint8_t *outline, std::size_t count, float weight,
                     float *textShares, float *outlineShares);
    /** Means: to[i] is the sum of from[2 i] to from[2 i + 3], each with its weight. */
    void (*Halve)(const float *from, std::size_t count, const std::array<float, 4> &weights, float *to);
};

/** For any processor. */
const BlendBytesKernel &PortableBlendBytes();

/** For this processor. */
const BlendBytesKernel &BestBlendBytes();
