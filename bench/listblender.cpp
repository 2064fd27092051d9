#include "listblender.h"

#include "bytevectors.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>

namespace
{

constexpr int Pixels = 16; ///< that are blended at once
constexpr std::size_t Block = 32;

__m128i Narrow(__m256i words)
{
    return _mm_packus_epi16(_mm256_castsi256_si128(words), _mm256_extracti128_si256(words, 1));
}

/** Repeats each of sixteen mask values for the three bytes of a pixel. @param part  0 to 2: which 16 of the 48 bytes */
__m128i Spread(__m128i mask, int part)
{
    alignas(16) static constexpr std::uint8_t places[3][16] = {
        {0, 0, 0, 1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4, 5},
        {5, 5, 6, 6, 6, 7, 7, 7, 8, 8, 8, 9, 9, 9, 10, 10},
        {10, 11, 11, 11, 12, 12, 12, 13, 13, 13, 14, 14, 14, 15, 15, 15}};
    return _mm_shuffle_epi8(mask, _mm_load_si128(reinterpret_cast<const __m128i *>(places[part])));
}

struct Color {
    std::array<std::uint8_t, 3> listBytes;
    int nOpacity;
    alignas(16) std::array<std::uint8_t, 48> listPattern; ///< sixteen pixels of this colour

    explicit Color(std::uint32_t rgba) :
        listBytes{static_cast<std::uint8_t>(rgba >> 24), static_cast<std::uint8_t>(rgba >> 16),
                  static_cast<std::uint8_t>(rgba >> 8)},
        nOpacity(255 - static_cast<int>(rgba & 255)),
        listPattern{}
    {
        for (std::size_t n = 0; n < listPattern.size(); ++n)
            listPattern[n] = listBytes[n % 3];
    }

    __m128i Pattern(int part) const
    {
        return _mm_load_si128(reinterpret_cast<const __m128i *>(listPattern.data()) + part);
    }
};

void BlendSixteen(std::uint8_t *pixels, __m128i mask, const Color &color)
{
    if (_mm_testz_si128(mask, mask))
        return;
    auto *places = reinterpret_cast<__m128i *>(pixels);
    if (color.nOpacity == 255 && _mm_test_all_ones(mask)) {
        for (int part = 0; part < 3; ++part)
            _mm_storeu_si128(places + part, color.Pattern(part));
        return;
    }
    for (int part = 0; part < 3; ++part) {
        __m256i weight = _mm256_cvtepu8_epi16(Spread(mask, part));
        if (color.nOpacity != 255)
            weight = DivideBy255(_mm256_mullo_epi16(weight, _mm256_set1_epi16(static_cast<short>(color.nOpacity))));
        const __m256i rest = _mm256_sub_epi16(_mm256_set1_epi16(255), weight);
        const __m256i old = _mm256_cvtepu8_epi16(_mm_loadu_si128(places + part));
        const __m256i own = _mm256_cvtepu8_epi16(color.Pattern(part));
        const __m256i sum = _mm256_add_epi16(_mm256_mullo_epi16(own, weight), _mm256_mullo_epi16(old, rest));
        _mm_storeu_si128(places + part, Narrow(DivideBy255(sum)));
    }
}

void BlendRow(std::uint8_t *pixels, const std::uint8_t *mask, int width, const Color &color)
{
    int column = 0;
    for (; column + Pixels <= width; column += Pixels)
        BlendSixteen(pixels + std::ptrdiff_t{3} * column,
                     _mm_loadu_si128(reinterpret_cast<const __m128i *>(mask + column)), color);
    if (column == width)
        return;
    alignas(16) std::uint8_t lastMask[Pixels] = {};
    std::uint8_t lastPixels[Pixels * 3];
    const std::size_t left = width - column;
    std::memcpy(lastMask, mask + column, left);
    std::memcpy(lastPixels, pixels + std::ptrdiff_t{3} * column, left * 3);
    BlendSixteen(lastPixels, _mm_load_si128(reinterpret_cast<const __m128i *>(lastMask)), color);
    std::memcpy(pixels + std::ptrdiff_t{3} * column, lastPixels, left * 3);
}

std::uint8_t Mixed(int own, int old, int weight)
{
    return static_cast<std::uint8_t>((own * weight + old * (255 - weight) + 127) / 255);
}

} // namespace

void BlendList(const ASS_Image *list, std::uint8_t *frame, int frameWidth)
{
    for (const ASS_Image *image = list; image; image = image->next) {
        const Color color(image->color);
        for (int row = 0; row < image->h; ++row) {
            const std::size_t place = static_cast<std::size_t>(image->dst_y + row) * frameWidth + image->dst_x;
            BlendRow(frame + place * 3, image->bitmap + static_cast<std::size_t>(row) * image->stride, image->w, color);
        }
    }
}

void MergedList::Merge(const ASS_Image *list, int frameWidth, int frameHeight)
{
    m_listRuns.clear();
    m_listColors.clear();
    m_listRests.clear();
    int top = frameHeight;
    int bottom = 0;
    for (const ASS_Image *image = list; image; image = image->next) {
        top = std::min(top, image->dst_y);
        bottom = std::max(bottom, image->dst_y + image->h);
    }

    std::vector<std::uint8_t> colors(static_cast<std::size_t>(frameWidth) * 3 + Block);
    std::vector<std::uint8_t> rests(colors.size());
    for (int row = top; row < bottom; ++row) {
        std::fill(colors.begin(), colors.end(), std::uint8_t{0});
        std::fill(rests.begin(), rests.end(), std::uint8_t{255});
        for (const ASS_Image *image = list; image; image = image->next) {
            if (row < image->dst_y || row >= image->dst_y + image->h)
                continue;
            const Color color(image->color);
            const std::uint8_t *mask = image->bitmap + static_cast<std::size_t>(row - image->dst_y) * image->stride;
            for (int n = 0; n < image->w * 3; ++n) {
                const int weight = mask[n / 3] * color.nOpacity / 255;
                const std::size_t at = static_cast<std::size_t>(image->dst_x) * 3 + n;
                colors[at] = Mixed(color.listBytes[n % 3], colors[at], weight);
                rests[at] = Mixed(0, rests[at], weight);
            }
        }
        for (std::size_t at = 0; at < colors.size() - Block; at += Block) {
            const auto first = rests.begin() + static_cast<std::ptrdiff_t>(at);
            if (std::all_of(first, first + Block, [](std::uint8_t rest) { return rest == 255; }))
                continue;
            const bool opaque = std::all_of(first, first + Block, [](std::uint8_t rest) { return rest == 0; });
            const std::size_t place = static_cast<std::size_t>(row) * frameWidth * 3 + at;
            const bool continues = !m_listRuns.empty() && m_listRuns.back().bOpaque == opaque &&
                                   m_listRuns.back().nPlace + m_listRuns.back().nBytes == place;
            if (continues)
                m_listRuns.back().nBytes += Block;
            else
                m_listRuns.push_back({place, m_listColors.size(), Block, opaque});
            m_listColors.insert(m_listColors.end(), colors.begin() + static_cast<std::ptrdiff_t>(at),
                                colors.begin() + static_cast<std::ptrdiff_t>(at + Block));
            m_listRests.insert(m_listRests.end(), first, first + Block);
        }
    }
}

void MergedList::Blend(std::uint8_t *frame) const
{
    for (const Run &run : m_listRuns) {
        std::uint8_t *pixels = frame + run.nPlace;
        const std::uint8_t *colors = m_listColors.data() + run.nFirst;
        const std::uint8_t *rests = m_listRests.data() + run.nFirst;
        for (std::size_t n = 0; n < run.nBytes; n += Block) {
            auto *place = reinterpret_cast<__m256i *>(pixels + n);
            const __m256i own = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(colors + n));
            if (run.bOpaque) {
                _mm256_storeu_si256(place, own);
                continue;
            }
            const __m256i old = _mm256_loadu_si256(place);
            const __m256i rest = _mm256_loadu_si256(reinterpret_cast<const __m256i *>(rests + n));
            _mm256_storeu_si256(place, Mix(own, rest, old));
        }
    }
}
