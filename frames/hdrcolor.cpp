#include "frames/hdrcolor.h"

extern "C" {
#include <libavutil/pixfmt.h>
}

#include <algorithm>
#include <cmath>

namespace
{

using Matrix = std::array<Rgb, 3>; // rows

/** CIE x and y of red, green and blue. */
struct Chromaticities {
    std::array<double, 3> x, y;
};
constexpr Chromaticities Bt709 = {{0.640, 0.300, 0.150}, {0.330, 0.600, 0.060}};
constexpr double WhiteX = 0.3127; // D65
constexpr double WhiteY = 0.3290;

bool Find(int primaries, Chromaticities &found)
{
    switch (primaries) {
    case 0:
    case AVCOL_PRI_UNSPECIFIED:
    case AVCOL_PRI_BT2020:
        found = {{0.708, 0.170, 0.131}, {0.292, 0.797, 0.046}};
        return true;
    case AVCOL_PRI_BT709:
        found = Bt709;
        return true;
    case AVCOL_PRI_BT470BG:
        found = {{0.640, 0.290, 0.150}, {0.330, 0.600, 0.060}};
        return true;
    case AVCOL_PRI_SMPTE170M:
    case AVCOL_PRI_SMPTE240M:
        found = {{0.630, 0.310, 0.155}, {0.340, 0.595, 0.070}};
        return true;
    case AVCOL_PRI_SMPTE432:
        found = {{0.680, 0.265, 0.150}, {0.320, 0.690, 0.060}};
        return true;
    case AVCOL_PRI_EBU3213:
        found = {{0.630, 0.295, 0.155}, {0.340, 0.605, 0.077}};
        return true;
    default:
        return false;
    }
}

Rgb Times(const Matrix &matrix, const Rgb &vector)
{
    Rgb result;
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = matrix[i][0] * vector[0] + matrix[i][1] * vector[1] + matrix[i][2] * vector[2];
    return result;
}

Matrix Times(const Matrix &a, const Matrix &b)
{
    Matrix result;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j)
            result[i][j] = a[i][0] * b[0][j] + a[i][1] * b[1][j] + a[i][2] * b[2][j];
    }
    return result;
}

Matrix Inverse(const Matrix &m)
{
    const auto cofactor = [&m](std::size_t row, std::size_t column) {
        const std::size_t r1 = (row + 1) % 3;
        const std::size_t r2 = (row + 2) % 3;
        const std::size_t c1 = (column + 1) % 3;
        const std::size_t c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    const double determinant = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    Matrix result;
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j)
            result[i][j] = cofactor(j, i) / determinant;
    }
    return result;
}

/** Linear RGB to CIE XYZ, with Y = 1 for white: SMPTE RP 177. */
Matrix ToXyz(const Chromaticities &primaries)
{
    Matrix columns;
    for (std::size_t i = 0; i < 3; ++i) {
        columns[0][i] = primaries.x[i] / primaries.y[i];
        columns[1][i] = 1;
        columns[2][i] = (1 - primaries.x[i] - primaries.y[i]) / primaries.y[i];
    }
    const Rgb scale = Times(Inverse(columns), Rgb{WhiteX / WhiteY, 1, (1 - WhiteX - WhiteY) / WhiteY});
    for (Rgb &row : columns) {
        for (std::size_t i = 0; i < 3; ++i)
            row[i] *= scale[i];
    }
    return columns;
}

/** IEC 61966-2-1. */
double SrgbToLinear(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

/** The inverse EOTF of ITU-R BT.2100, table 4. @param level  cd/m2 */
double Pq(double level)
{
    constexpr double M1 = 2610.0 / 16384;
    constexpr double M2 = 2523.0 / 4096 * 128;
    constexpr double C1 = 3424.0 / 4096;
    constexpr double C2 = 2413.0 / 4096 * 32;
    constexpr double C3 = 2392.0 / 4096 * 32;
    const double power = std::pow(std::clamp(level / 10000, 0.0, 1.0), M1);
    return std::pow((C1 + C2 * power) / (1 + C3 * power), M2);
}

/** The OETF of ITU-R BT.2100, table 5. */
double Hlg(double scene)
{
    constexpr double A = 0.17883277;
    constexpr double B = 1 - 4 * A;
    const double c = 0.5 - A * std::log(4 * A);
    const double light = std::clamp(scene, 0.0, 1.0);
    return light <= 1.0 / 12 ? std::sqrt(3 * light) : A * std::log(12 * light - B) + c;
}

} // namespace

bool HdrColor::Set(int transfer, int primaries, double white)
{
    Chromaticities found = {};
    if ((transfer != AVCOL_TRC_SMPTE2084 && transfer != AVCOL_TRC_ARIB_STD_B67) || !Find(primaries, found))
        return false;
    m_bHlg = transfer == AVCOL_TRC_ARIB_STD_B67;
    m_dWhite = white;
    m_fromSrgb = Times(Inverse(ToXyz(found)), ToXyz(Bt709));
    return true;
}

Rgb HdrColor::Code(const Rgb &color) const
{
    Rgb linear;
    for (std::size_t i = 0; i < 3; ++i)
        linear[i] = SrgbToLinear(color[i]);
    Rgb light = Times(m_fromSrgb, linear);
    if (!m_bHlg) {
        for (double &value : light)
            value = Pq(m_dWhite * value);
        return light;
    }
    // The inverse of the OOTF, for a display whose peak is 1,000 cd/m2 and whose black is 0.
    constexpr double Peak = 1000;
    constexpr double Gamma = 1.2;
    for (double &value : light)
        value = std::clamp(m_dWhite * value / Peak, 0.0, 1.0);
    const double luminance = 0.2627 * light[0] + 0.6780 * light[1] + 0.0593 * light[2];
    const double scale = luminance > 0 ? std::pow(luminance, (1 - Gamma) / Gamma) : 0;
    for (double &value : light)
        value = Hlg(value * scale);
    return light;
}
