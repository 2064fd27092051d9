#include "frames/chromasite.h"

#include <algorithm>

std::array<int, 4> ChromaAxis::Weights() const
{
    switch (m_site) {
    case Site::First:
        return {1, 2, 1, 0};
    case Site::Second:
        return {0, 1, 2, 1};
    default:
        return {0, 2, 2, 0};
    }
}

Taps ChromaAxis::At(int sample) const
{
    if (m_nLog2 == 0)
        return {1, {sample}, {Taps::Whole}};
    const int field = m_bByField ? sample % 2 : 0;
    const int first = m_bByField ? sample / 2 * 2 : sample * 2;
    std::array<int, 4> weights = Weights();
    // In the first field a quarter of the way to the field's next line, in the second one three quarters.
    if (m_bByField && m_site == Site::Between)
        weights = field == 0 ? std::array<int, 4>{0, 3, 1, 0} : std::array<int, 4>{0, 1, 3, 0};
    Taps taps = {};
    for (int i = 0; i < 4; ++i) {
        if (weights[i] > 0) {
            taps.positions[taps.nCount] = first + i - 1;
            taps.weights[taps.nCount++] = weights[i];
        }
    }
    const int pixels = m_bByField ? (m_nPixels - field + 1) / 2 : m_nPixels;
    for (int i = 0; i < taps.nCount; ++i) {
        taps.positions[i] = std::clamp(taps.positions[i], 0, pixels - 1);
        if (m_bByField)
            taps.positions[i] = taps.positions[i] * 2 + field;
    }
    return taps;
}

int ChromaAxis::SampleOf(int pixel) const
{
    if (!m_bByField)
        return pixel >> m_nLog2;
    const int sample = pixel / 4 * 2 + pixel % 2;
    // Of an odd number of chroma lines the second field has one less.
    return sample < Samples() ? sample : std::max(0, sample - 2);
}

void ChromaAxis::ToSamples(int &first, int &last) const
{
    if (m_nLog2 == 0)
        return;
    const int reach = m_bByField ? 4 : 1;
    first = std::max(0, (first - reach) / 2);
    last = std::min(Samples() - 1, (last + reach) / 2);
}
