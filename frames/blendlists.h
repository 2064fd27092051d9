#pragma once

#include "frames/framelayout.h"

#include <cstddef>
#include <cstdint>
#include <vector>

/** The entries of a span in a ByteBlend are padded to a multiple of this. */
constexpr std::size_t BlendBytes = 64;

/**
 * How the bytes of a plane change: new = (base + rest * old) / 255, truncated. A rest of 255 with a base of 127 leaves
 * a byte unchanged; entries that pad a span have these.
 */
struct ByteBlend {
    std::vector<Span> listSpans;
    std::vector<std::uint16_t> listBases;
    std::vector<std::uint8_t> listRests;

    void Clear();
    /** Adds a span of unchanged bytes. Returns the index of its first entry in listBases and listRests. */
    std::size_t Add(int row, int first, int count);

private:
    std::size_t m_nUsed = 0; ///< entries in use; the lists never shrink
};

/** The same for samples in elements wider than a byte: new = (base + rest * old) / 65,536, truncated. */
struct SampleBlend {
    std::vector<Span> listSpans;
    std::vector<std::uint32_t> listBases;
    std::vector<std::uint32_t> listRests; ///< 0 to 65,536
};

/** All kernels give the same bytes. */
struct BlendBytesKernel {
    /** Bytes after a span may be rewritten with their own value; nothing past the end of a row is read or written. */
    void (*Blend)(const PlaneTarget &plane, const ByteBlend &blend);
};

/** Runs on any processor. */
const BlendBytesKernel &PortableBlendBytes();

/** The fastest one that this processor supports. */
const BlendBytesKernel &BestBlendBytes();
