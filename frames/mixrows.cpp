#include "frames/mixrows.h"

#include <cstring>

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

void MixPass::Prefetch(const FramePlanes &planes, int row, int first) const
{
    for (int i = 0; i < nRows; ++i)
        __builtin_prefetch(planes[rows[i].nPlane].Row(row) + first * rows[i].form.Bytes(), 1);
}

// cppcheck-suppress uninitMemberVar; see m_rows
MixRows::MixRows(const MixKernel &kernel, const MixPass &pass, const FramePlanes &planes, const MixChunkPlace &place) :
    m_kernel(kernel), m_pass(pass), m_nSteps(place.Steps())
{
    for (int i = 0; i < pass.nRows; ++i) {
        const RowForm &form = pass.rows[i].form;
        const PlaneTarget &plane = planes[pass.rows[i].nPlane];
        const std::ptrdiff_t before = place.nFirst * form.Bytes();
        const std::ptrdiff_t bytes = static_cast<std::ptrdiff_t>(m_nSteps) * form.Bytes();
        Row &row = m_rows[i];
        row.pFrame = nullptr;
        row.pBytes = plane.Row(place.nRow) + before;
        if (bytes > plane.nRowBytes - before) {
            row.pFrame = row.pBytes;
            row.pBytes = row.copy.data();
            row.nInFrame = plane.nRowBytes - before;
            std::memcpy(row.pBytes, row.pFrame, row.nInFrame);
            std::memset(row.pBytes + row.nInFrame, 0, bytes - row.nInFrame);
        }
        kernel.Split(row.pBytes, m_nSteps, form, row.channels);
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
