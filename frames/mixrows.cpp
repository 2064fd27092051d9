#include "frames/mixrows.h"

#include <cstring>

namespace
{

/** Prefetches the same columns some rows further down. */
void Prefetch(const PlaneTarget &plane, const std::uint8_t *bytes, std::ptrdiff_t count)
{
    // Decoded frames are no longer in the caches, and rows are too far apart for the hardware prefetcher.
    constexpr std::intptr_t Ahead = 4;
    constexpr std::ptrdiff_t CacheLine = 64;
    // That row may not exist. Prefetching a bad address does nothing, but a pointer to it would be undefined.
    const auto below = reinterpret_cast<std::uintptr_t>(bytes) + static_cast<std::uintptr_t>(Ahead * plane.nLinesize);
    for (std::ptrdiff_t at = 0; at < count; at += CacheLine)
        __builtin_prefetch(reinterpret_cast<const void *>(below + at), 1); // NOLINT(performance-no-int-to-ptr)
}

} // namespace

void MixPass::Add(const PixelFormat &format, int number)
{
    const Component &component = format.components[number];
    components[nComponents++] = number;
    int row = 0;
    while (row < nRows && rows[row].nPlane != component.nPlane)
        ++row;
    if (row == nRows)
        ++nRows;
    RowForm form = {format.nElementBytes, component.nStep, {}};
    for (std::size_t i = 0; form.IsPacked() && i < form.shifts.size(); ++i)
        form.shifts[i] = format.components[i].nShift;
    rows[row] = {component.nPlane, form};
    rowOf[number] = row;
    channelOf[number] = form.IsPacked() ? number : component.nOffset;
}

void MixRows::Read(const FramePlanes &planes, const MixChunkPlace &place)
{
    m_nSteps = place.Steps();
    std::uint8_t *copy = m_copy.data();
    for (int i = 0; i < m_pass.nRows; ++i) {
        const RowForm &form = m_pass.rows[i].form;
        const PlaneTarget &plane = planes[m_pass.rows[i].nPlane];
        const std::ptrdiff_t before = place.nFirst * form.Bytes();
        const std::ptrdiff_t bytes = static_cast<std::ptrdiff_t>(m_nSteps) * form.Bytes();
        Row &row = m_rows[i];
        row.pFrame = nullptr;
        row.pBytes = plane.Row(place.nRow) + before;
        Prefetch(plane, row.pBytes, bytes);
        if (bytes > plane.nRowBytes - before) {
            row.pFrame = row.pBytes;
            row.pBytes = copy;
            copy += bytes;
            row.nInFrame = plane.nRowBytes - before;
            std::memcpy(row.pBytes, row.pFrame, row.nInFrame);
            std::memset(row.pBytes + row.nInFrame, 0, bytes - row.nInFrame);
        }
        m_kernel.Split(row.pBytes, m_nSteps, form, row.channels);
    }
}

void MixRows::Write()
{
    for (int i = 0; i < m_pass.nRows; ++i) {
        const Row &row = m_rows[i];
        m_kernel.Join(row.channels, m_nSteps, m_pass.rows[i].form, row.pBytes);
        if (row.pFrame)
            std::memcpy(row.pFrame, row.pBytes, row.nInFrame);
    }
}
