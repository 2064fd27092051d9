#include "mergedyuv.h"

#include "bytevectors.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

namespace
{

constexpr int Step = 16;    ///< samples of 16 bits in a vector
constexpr int Columns = 64; ///< a multiple of this is whole blocks in every plane of every format
constexpr std::int16_t Whole = 32767;

__m256i Load(const void *from)
{
    return _mm256_loadu_si256(static_cast<const __m256i *>(from));
}

void Store(void *to, __m256i value)
{
    _mm256_storeu_si256(static_cast<__m256i *>(to), value);
}

/** Blends a colour over samples, and reduces the weight of the frame accordingly. */
void Cover(std::int16_t *own, std::int16_t *rests, __m256i weight, std::int16_t color)
{
    const __m256i old = Load(own);
    const __m256i distance = _mm256_sub_epi16(_mm256_set1_epi16(color), old);
    Store(own, _mm256_add_epi16(old, _mm256_mulhrs_epi16(distance, weight)));
    const __m256i rest = Load(rests);
    Store(rests, _mm256_sub_epi16(rest, _mm256_mulhrs_epi16(rest, weight)));
}

/** Scales the sum of four pixels' weights, 0 to 1020, to 0 to 32767. */
__m256i WeightOfFour(__m256i sum)
{
    return _mm256_add_epi16(_mm256_slli_epi16(sum, 5), _mm256_srli_epi16(sum, 3));
}

/** Blends samples of p010, which has 10 bits at the top of 16. */
__m256i MixWords(__m256i own, __m256i rest, __m256i old)
{
    const __m256i sum = _mm256_add_epi16(own, _mm256_mulhrs_epi16(_mm256_srli_epi16(old, 1), rest));
    return _mm256_slli_epi16(_mm256_srli_epi16(_mm256_add_epi16(sum, _mm256_set1_epi16(16)), 5), 6);
}

/** The same for opaque samples. */
__m256i FinishWords(__m256i own)
{
    return MixWords(own, _mm256_setzero_si256(), own);
}

void CopyRun(std::uint8_t *samples, const std::uint8_t *own, std::size_t bytes)
{
    for (std::size_t n = 0; n < bytes; n += sizeof(__m256i))
        Store(samples + n, Load(own + n));
}

template <__m256i (*MixSamples)(__m256i, __m256i, __m256i)>
void BlendRun(std::uint8_t *samples, const std::uint8_t *own, const std::uint8_t *rests, std::size_t bytes)
{
    for (std::size_t n = 0; n < bytes; n += sizeof(__m256i))
        Store(samples + n, MixSamples(Load(own + n), Load(rests + n), Load(samples + n)));
}

// Conversions of 15-bit samples to what is kept: bytes, or words. In words, rests of up to 7 are rounding errors and
// become 0.
__m256i ByteOfOwn(__m256i own)
{
    return _mm256_srli_epi16(_mm256_add_epi16(own, _mm256_set1_epi16(64)), 7);
}

__m256i ByteOfRest(__m256i rest)
{
    return _mm256_mulhrs_epi16(rest, _mm256_set1_epi16(255));
}

__m256i WordOfOwn(__m256i own)
{
    return own;
}

__m256i WordOfRest(__m256i rest)
{
    return _mm256_and_si256(rest, _mm256_cmpgt_epi16(rest, _mm256_set1_epi16(7)));
}

/** Converts samples of one row, or alternating ones of two rows, and stores them as bytes or as words. */
template <__m256i (*Finish)(__m256i), bool AreWords>
void Keep(std::uint8_t *to, const std::int16_t *first, const std::int16_t *second, int samples)
{
    for (int n = 0; n < samples; n += second ? Step : 2 * Step) {
        __m256i a = Load(first + n);
        __m256i b = Load(second ? second + n : first + n + Step);
        if (second) {
            const __m256i low = _mm256_unpacklo_epi16(a, b);
            const __m256i high = _mm256_unpackhi_epi16(a, b);
            a = _mm256_permute2x128_si256(low, high, 0x20);
            b = _mm256_permute2x128_si256(low, high, 0x31);
        }
        a = Finish(a);
        b = Finish(b);
        if (AreWords) {
            Store(to, a);
            Store(to + sizeof a, b);
        } else {
            Store(to, _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8));
        }
        to += AreWords ? 2 * sizeof a : sizeof a;
    }
}

bool IsEach(__m256i block, __m256i value)
{
    const __m256i difference = _mm256_xor_si256(block, value);
    return _mm256_testz_si256(difference, difference) != 0;
}

} // namespace

/** The code values of a colour, with 15 bits each. */
struct MergedYuv::Color {
    std::int16_t y, u, v;
    std::int16_t nOpacity;

    Color(std::uint32_t rgba, YuvFormat format)
    {
        const double red = static_cast<double>(rgba >> 24) / 255;
        const double green = static_cast<double>(rgba >> 16 & 255) / 255;
        const double blue = static_cast<double>(rgba >> 8 & 255) / 255;
        const double luma = 0.2126 * red + 0.7152 * green + 0.0722 * blue;
        const int bits = format == YuvFormat::P010 ? 10 : 8;
        const auto code = [bits](double value) {
            const auto rounded = static_cast<int>(std::lround(value * (1 << (bits - 8))));
            return static_cast<std::int16_t>(rounded << (15 - bits));
        };
        y = code(16 + 219 * luma);
        u = code(128 + 224 * (blue - luma) / 1.8556);
        v = code(128 + 224 * (red - luma) / 1.5748);
        nOpacity = static_cast<std::int16_t>(std::lround((255 - static_cast<int>(rgba & 255)) / 255.0 * Whole));
    }

    __m256i Weight(__m256i weight) const
    {
        return nOpacity == Whole ? weight : _mm256_mulhrs_epi16(weight, _mm256_set1_epi16(nOpacity));
    }
};

void MergedYuv::Row::Clear(int from, int to)
{
    std::fill(listOwn.begin() + from, listOwn.begin() + to, std::int16_t{0});
    std::fill(listRests.begin() + from, listRests.begin() + to, Whole);
}

MergedYuv::MergedYuv(YuvFormat format, int width, int height) : m_format(format), m_nWidth(width), m_nHeight(height)
{
    const auto samples = static_cast<std::size_t>(width);
    for (std::size_t i = 0; i < 2; ++i) {
        m_listMasks[i].resize(samples);
        m_listLuma[i].listOwn.resize(samples);
        m_listLuma[i].listRests.resize(samples);
        m_listChroma[i].listOwn.resize(samples / 2);
        m_listChroma[i].listRests.resize(samples / 2);
    }
    m_listOwn.resize(samples * 2);
    m_listRests.resize(samples * 2);
}

void MergedYuv::Merge(const ASS_Image *list)
{
    int top = m_nHeight;
    int bottom = 0;
    m_nLeft = m_nWidth;
    m_nRight = 0;
    for (const ASS_Image *image = list; image; image = image->next) {
        top = std::min(top, image->dst_y);
        bottom = std::max(bottom, image->dst_y + image->h);
        m_nLeft = std::min(m_nLeft, image->dst_x);
        m_nRight = std::max(m_nRight, image->dst_x + image->w);
    }
    m_nLeft = m_nLeft / Columns * Columns;
    m_nRight = (m_nRight + Columns - 1) / Columns * Columns;
    for (Layer &layer : m_listLayers) {
        layer.listRuns.clear();
        layer.listOwn.clear();
        layer.listRests.clear();
    }
    for (int row = top / 2 * 2; row < bottom; row += 2)
        MergeRows(list, row);
}

/** Merges two rows of the frame, and their row of chroma. */
void MergedYuv::MergeRows(const ASS_Image *list, int row)
{
    for (int i = 0; i < 2; ++i) {
        m_listLuma[i].Clear(m_nLeft, m_nRight);
        m_listChroma[i].Clear(m_nLeft / 2, m_nRight / 2);
    }
    for (const ASS_Image *image = list; image; image = image->next) {
        if (row + 1 >= image->dst_y && row < image->dst_y + image->h && image->w > 0)
            CoverRows(*image, row);
    }
    AppendRow(m_listLayers[0], row, m_listLuma[0], nullptr);
    AppendRow(m_listLayers[0], row + 1, m_listLuma[1], nullptr);
    if (m_format == YuvFormat::Yuv420p) {
        AppendRow(m_listLayers[1], row / 2, m_listChroma[0], nullptr);
        AppendRow(m_listLayers[2], row / 2, m_listChroma[1], nullptr);
    } else {
        AppendRow(m_listLayers[1], row / 2, m_listChroma[0], &m_listChroma[1]);
    }
}

void MergedYuv::CoverRows(const ASS_Image &image, int row)
{
    const Color color(image.color, m_format);
    const int left = image.dst_x / (2 * Step) * (2 * Step);
    const int right = (image.dst_x + image.w + 2 * Step - 1) / (2 * Step) * (2 * Step);
    for (int i = 0; i < 2; ++i) {
        std::uint8_t *mask = m_listMasks[i].data();
        std::memset(mask + left, 0, right - left);
        const int line = row + i - image.dst_y;
        if (line >= 0 && line < image.h)
            std::memcpy(mask + image.dst_x, image.bitmap + static_cast<std::ptrdiff_t>(line) * image.stride, image.w);
        Row &luma = m_listLuma[i];
        for (int x = left; x < right; x += Step) {
            const __m256i alpha = _mm256_cvtepu8_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i *>(mask + x)));
            const __m256i weight = _mm256_or_si256(_mm256_slli_epi16(alpha, 7), _mm256_srli_epi16(alpha, 1));
            Cover(&luma.listOwn[x], &luma.listRests[x], color.Weight(weight), color.y);
        }
    }
    const __m256i ones = _mm256_set1_epi8(1);
    for (int x = left; x < right; x += 2 * Step) {
        const __m256i sum = _mm256_add_epi16(_mm256_maddubs_epi16(Load(&m_listMasks[0][x]), ones),
                                             _mm256_maddubs_epi16(Load(&m_listMasks[1][x]), ones));
        const __m256i weight = color.Weight(WeightOfFour(sum));
        Cover(&m_listChroma[0].listOwn[x / 2], &m_listChroma[0].listRests[x / 2], weight, color.u);
        Cover(&m_listChroma[1].listOwn[x / 2], &m_listChroma[1].listRests[x / 2], weight, color.v);
    }
}

void MergedYuv::AppendRow(Layer &layer, int row, const Row &first, const Row *second)
{
    const bool areWords = m_format == YuvFormat::P010;
    const int halves = &layer == m_listLayers.data() ? 1 : 2;
    const int left = m_nLeft / halves;
    const int samples = m_nRight / halves - left;
    const auto keep = [&](auto function, std::vector<std::uint8_t> &to, std::vector<std::int16_t> Row::*from) {
        function(to.data(), (first.*from).data() + left, second ? (second->*from).data() + left : nullptr, samples);
    };
    keep(areWords ? Keep<WordOfOwn, true> : Keep<ByteOfOwn, false>, m_listOwn, &Row::listOwn);
    keep(areWords ? Keep<WordOfRest, true> : Keep<ByteOfRest, false>, m_listRests, &Row::listRests);
    std::size_t sampleBytes = areWords ? 2 : 1;
    sampleBytes *= second ? 2 : 1;
    KeepBlocks(layer, row, left * sampleBytes, samples * sampleBytes);
}

/** Appends the visible blocks of the row in m_listOwn and m_listRests to a layer. */
void MergedYuv::KeepBlocks(Layer &layer, int row, std::size_t place, std::size_t bytes)
{
    const bool areWords = m_format == YuvFormat::P010;
    const __m256i whole = areWords ? _mm256_set1_epi16(Whole) : _mm256_set1_epi8(-1);
    std::size_t end = layer.listOwn.size();
    layer.listOwn.resize(end + bytes);
    layer.listRests.resize(end + bytes);
    const Run *last = nullptr;
    for (std::size_t at = 0; at < bytes; at += Block) {
        const __m256i rests = Load(&m_listRests[at]);
        if (IsEach(rests, whole))
            continue;
        const bool isOpaque = IsEach(rests, _mm256_setzero_si256());
        const __m256i own = Load(&m_listOwn[at]);
        if (last && last->bOpaque == isOpaque && last->nPlace + last->nBytes == place + at)
            layer.listRuns.back().nBytes += Block;
        else
            layer.listRuns.push_back({static_cast<std::size_t>(row), place + at, end, Block, isOpaque});
        last = &layer.listRuns.back();
        Store(&layer.listOwn[end], isOpaque && areWords ? FinishWords(own) : own);
        Store(&layer.listRests[end], rests);
        end += Block;
    }
    layer.listOwn.resize(end);
    layer.listRests.resize(end);
}

void MergedYuv::Blend(const YuvPlanes &frame) const
{
    const bool isWords = m_format == YuvFormat::P010;
    for (std::size_t plane = 0; plane < m_listLayers.size(); ++plane) {
        const Layer &layer = m_listLayers[plane];
        for (const Run &run : layer.listRuns) {
            std::uint8_t *samples =
                frame.data[plane] + static_cast<std::ptrdiff_t>(run.nRow) * frame.linesize[plane] + run.nPlace;
            const std::uint8_t *own = &layer.listOwn[run.nFirst];
            const std::uint8_t *rests = &layer.listRests[run.nFirst];
            if (run.bOpaque)
                CopyRun(samples, own, run.nBytes);
            else if (isWords)
                BlendRun<MixWords>(samples, own, rests, run.nBytes);
            else
                BlendRun<Mix>(samples, own, rests, run.nBytes);
        }
    }
}
