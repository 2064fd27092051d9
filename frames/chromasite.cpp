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
    // Midway siting in interlaced frames: chroma lies a quarter of the way to the next line of its field in the first
    // field, three quarters in the second.
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
    // With an odd number of chroma lines, the second field has one line less than the first.
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
