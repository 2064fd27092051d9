#pragma once

#include "frames/framelayout.h"
#include "frames/mixkernel.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** Neighbouring samples in a row that are processed at once. */
struct MixChunkPlace {
    int nRow;
    int nFirst; ///< number of the first sample
    int nCount; ///< at most MixChunk

    /** The count rounded up to whole steps, in samples. */
    std::size_t Steps() const { return (nCount + MixStep - 1) / MixStep * MixStep; }
};

/** The components of one resolution, which are mixed together, and where they lie. */
struct MixPass {
    struct PlaneRow {
        int nPlane;
        RowForm form;
    };
    int nComponents = 0;
    std::array<int, 4> components = {}; ///< their numbers, in the order of their bases
    int nRows = 0;
    std::array<PlaneRow, 4> rows = {};
    std::array<int, 4> rowOf = {}, channelOf = {}; ///< index in `rows`, and channel there, by component number

    void Add(const PixelFormat &format, int number);
};

/** The samples of a chunk, split into components. */
class MixRows
{
public:
    /** @param pass  must outlive this */
    MixRows(const MixKernel &kernel, const MixPass &pass) : m_kernel(kernel), m_pass(pass) {}

    void Read(const FramePlanes &planes, const MixChunkPlace &place);
    MixSamples &Of(int component) { return m_rows[m_pass.rowOf[component]].channels[m_pass.channelOf[component]]; }
    /** Writes the channels back to where Read() read them. */
    void Write();

private:
    struct Row {
        Channels channels;
        std::uint8_t *pBytes;    ///< whole steps, in the frame or in the copy
        std::uint8_t *pFrame;    ///< where the copy is written back to; null if there is no copy
        std::ptrdiff_t nInFrame; ///< bytes of the copy that are written back
    };
    /** Most bytes of a sample, all components together. */
    static constexpr std::size_t MostBytes = 8;

    const MixKernel &m_kernel;
    const MixPass &m_pass;
    std::size_t m_nSteps = 0;
    // Not initialised: that would cost more than the mixing.
    std::array<Row, 4> m_rows;
    std::array<std::uint8_t, MixChunk * MostBytes> m_copy;
};
