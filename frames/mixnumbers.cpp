#include "frames/mixnumbers.h"

#include <algorithm>
#include <cmath>

namespace
{

/** Number of the alpha component. */
constexpr int Alpha = 3;

std::int16_t ShareOf(double share)
{
    return static_cast<std::int16_t>(std::min(std::lround(std::ldexp(share, 15)), 32767L));
}

} // namespace

void MixNumbers::Set(const PixelFormat &format, bool isAsRgb24)
{
    m_bAsRgb24 = isAsRgb24;
    const Component &component = format.components[0];
    m_nDepth = component.nDepth;
    // Split() has shifted out the bits below the channels of packed elements.
    m_nUp = 16 - m_nDepth - (format.nElementBytes == 4 ? 0 : component.nShift);
    m_nMiddle = isAsRgb24 ? 0 : 1 << (m_nDepth - 1 + FineBits);
}

MixSettings MixNumbers::Settings(const RedBlueExchange &exchange) const
{
    MixSettings settings = {};
    settings.bAsRgb24 = m_bAsRgb24;
    settings.nUp = m_nUp;
    settings.nMask = static_cast<std::uint16_t>(0xFFFF << (16 - m_nDepth));
    for (std::size_t i = 0; i < 2; ++i) {
        settings.single[i] = ShareOf(exchange.single[i]);
        for (std::size_t j = 0; j < 2; ++j)
            settings.pair[i][j] = ShareOf(exchange.matrix[i][j] - (i == j ? 0 : 1));
    }
    return settings;
}

MixNumbers::Part MixNumbers::PartOf(const Sum &sum, const MixPass &pass) const
{
    Part part = {};
    if (sum.IsUntouched()) {
        part.nRest = Untouched;
        return part;
    }
    if (m_bAsRgb24) {
        for (int i = 0; i < pass.nComponents; ++i) {
            const std::int64_t base = sum.m_codes[i] / (AllTaps << FineBits);
            part.bases[i] = static_cast<std::uint16_t>(base + (pass.components[i] == Alpha ? Opaque / 2 : 0));
        }
        part.nRest = static_cast<std::int16_t>(sum.m_nRest / AllTaps);
        return part;
    }
    constexpr std::int64_t Whole = std::int64_t{AllTaps} * Opaque;
    constexpr std::int64_t Divisor = Whole << FineBits;
    constexpr std::int64_t Least = 32768;
    for (int i = 0; i < pass.nComponents; ++i) {
        // Rounded to nearest. The dividend is made positive first, since division truncates toward 0.
        const std::int64_t scaled = sum.m_codes[i] * (std::int64_t{1} << (16 - m_nDepth)) + Divisor / 2;
        part.bases[i] = static_cast<std::uint16_t>((scaled + Least * Divisor) / Divisor - Least);
    }
    const std::int64_t rest = (std::int64_t{sum.m_nRest} * 32768 + Whole / 2) / Whole;
    part.nRest = static_cast<std::int16_t>(std::min<std::int64_t>(rest, 32767));
    part.nKeep = static_cast<std::int16_t>(sum.m_nKeep * (32768 / AllTaps));
    return part;
}
