#pragma once

#include "frames/framelayout.h"
#include "frames/mixkernel.h"

#include <array>
#include <cstddef>
#include <cstdint>

/** Neighbours in a row that are worked on at once. */
struct MixChunkPlace {
    int nRow;
    int nFirst; ///< sample
    int nCount; ///< at most MixChunk

    /** Whole steps for them all. */
    std::size_t Steps() const { return (nCount + MixStep - 1) / MixStep * MixStep; }
};

/** Components of one resolution that are mixed at once, and where they lie. */
struct MixPass {
    struct PlaneRow {
        int nPlane;
        RowForm form;
    };
    int nComponents = 0;
    std::array<int, 4> components = {}; ///< their numbers, in the order of their bases
    int nRows = 0;
    std::array<PlaneRow, 4> rows = {};
    std::array<int, 4> rowOf = {}, channelOf = {}; ///< of the components, by number

    void Add(const PixelFormat &format, int number);
};

/** The samples of a chunk, split into components. */
class MixRows
{
public:
    /** @param pass  must stay valid as long as this */
    MixRows(const MixKernel &kernel, const MixPass &pass) : m_kernel(kernel), m_pass(pass) {}

    void Read(const FramePlanes &planes, const MixChunkPlace &place);
    MixSamples &Of(int component) { return m_rows[m_pass.rowOf[component]].channels[m_pass.channelOf[component]]; }
    /** Of what was read. */
    void Write();

private:
    struct Row {
        Channels channels;
        std::uint8_t *pBytes;    ///< whole steps, in the frame or in the copy
        std::uint8_t *pFrame;    ///< where the copy belongs; null for none
        std::ptrdiff_t nInFrame; ///< bytes of the copy that do
    };
    /** Bytes of a sample of all components at once, at most. */
    static constexpr std::size_t MostBytes = 8;

    const MixKernel &m_kernel;
    const MixPass &m_pass;
    std::size_t m_nSteps = 0;
    // Not initialised, which would cost more than the work.
    std::array<Row, 4> m_rows;
    std::array<std::uint8_t, MixChunk * MostBytes> m_copy;
};
