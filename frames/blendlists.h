#pragma once

#include "frames/framelayout.h"

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
    /** Adds a span whose bytes stay as they are, and returns where these begin in the lists. */
    std::size_t Add(int row, int first, int count);

private:
    std::size_t m_nUsed = 0; ///< of the lists, which do not become smaller
};

/** The same of samples of more bits: new = (base + rest * old) / 65,536, truncated. */
struct SampleBlend {
    std::vector<Span> listSpans;
    std::vector<std::uint32_t> listBases;
    std::vector<std::uint32_t> listRests; ///< 0 to 65,536
};

/** All kernels give the same bytes. */
struct BlendBytesKernel {
    /** Bytes after a span may be written with what they hold; nothing after a row's end is read or written. */
    void (*Blend)(const PlaneTarget &plane, const ByteBlend &blend);
};

/** For any processor. */
const BlendBytesKernel &PortableBlendBytes();

/** For this processor. */
const BlendBytesKernel &BestBlendBytes();
