#include "frames/chromasite.h"

#include <algorithm>

Taps ChromaAxis::At(int sample) const
{
    if (m_nLog2 == 0)
        return {1, {sample}, {Taps::Whole}};
    const int field = m_bByField ? sample % 2 : 0;
    const int first = m_bByField ? sample / 2 * 2 : sample * 2;
    Taps taps = {};
    switch (m_site) {
    case Site::First:
        taps = {3, {first - 1, first, first + 1}, {1, 2, 1}};
        break;
    case Site::Second:
        taps = {3, {first, first + 1, first + 2}, {1, 2, 1}};
        break;
    case Site::Between:
        // In the first field a quarter of the way to the field's next line, in the second one three quarters.
        taps = {2, {first, first + 1}, {2, 2}};
        if (m_bByField)
            taps.weights = field == 0 ? std::array<int, 3>{3, 1} : std::array<int, 3>{1, 3};
        break;
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
