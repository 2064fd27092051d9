#include "render/compositor.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <tuple>
#include <utility>

namespace
{

/** Sentinel: the pixel is not drawn. Not the same as weight 0, which still swaps the first and the last byte. */
constexpr int NoWeight = -1;

/** The weight of a pixel of alpha @p pixelAlpha. Intentional: the opacity counts twice, truncated each time. */
inline int Weight(int pixelAlpha, int opacity)
{
    const int a = pixelAlpha * opacity / 255;
    return a == 0 ? NoWeight : opacity * a / 255;
}

/**
 * The weight that means "not drawn" in a block. No drawn pixel has it: their weights are above 0 at opacity 255, and
 * below 255 at any other.
 */
inline int Untouched(int opacity)
{
    return opacity == 255 ? 0 : 255;
}

/** Clears the bits of a row outside the half-open column range [from, to). @param left  the column of its first bit */
void ClearOutside(std::uint64_t *row, int words, int left, int from, int to)
{
    for (int word = 0; word < words; ++word) {
        const int column = left + 64 * word;
        if (column < from)
            row[word] &= from - column < 64 ? ~std::uint64_t{0} << (from - column) : 0;
        if (column + 64 > to)
            row[word] &= to > column ? ~std::uint64_t{0} >> (64 - (to - column)) : 0;
    }
}

/**
 * Covers the set bits of @p shown with blocks, each of which begins at a set bit. Calls @p call(column, text, shown)
 * for each, with the block's bits of both rows.
 */
template <typename Call>
void ForInkBlocks(const std::uint64_t *text, const std::uint64_t *shown, int words, Call call)
{
    const std::uint64_t ofBlock = (std::uint64_t{1} << BlockPixels) - 1;
    const int lastPlace = 64 - BlockPixels;
    for (int column = 0; column < 64 * words;) {
        std::uint64_t bits = BitsFrom(shown, column);
        const std::uint64_t ofText = BitsFrom(text, column);
        int place = 0;
        while (bits) {
            const int transparent = __builtin_ctzll(bits);
            place += transparent;
            if (place > lastPlace)
                break;
            bits >>= transparent;
            call(column + place, ofText >> place & ofBlock, bits & ofBlock);
            bits >>= BlockPixels;
            place += BlockPixels;
        }
        column += bits ? place : 64;
    }
}

bool HasInk(const InkBits &ink)
{
    return std::any_of(ink.pShown, ink.pShown + std::ptrdiff_t{ink.nRows} * (ink.nWords + 1),
                       [](std::uint64_t bits) { return bits != 0; });
}

/** The rows in the half-open range [top, end). */
InkBits RowsOf(InkBits ink, std::int64_t top, std::int64_t end)
{
    const int first = static_cast<int>(std::max<std::int64_t>(ink.nTop, top));
    const int last = static_cast<int>(std::min<std::int64_t>(ink.nTop + std::int64_t{ink.nRows}, end));
    if (first >= last)
        return {};
    ink.pText = ink.Text(first);
    ink.pShown = ink.Shown(first);
    ink.nTop = first;
    ink.nRows = last - first;
    return ink;
}

/** A pixel, stored as bytes blue, green, red, alpha, as a word with alpha in the highest byte. */
std::uint32_t Word(const std::uint8_t *pixel)
{
    return qFromLittleEndian<std::uint32_t>(pixel);
}

/** The first column from @p column on whose pixel is not transparent; @p end if there is none. */
int SkipTransparent(const std::uint8_t *pixels, int column, int end)
{
    // Bitmaps are as large as the frame and nearly all transparent: skip eight pixels at a time.
    constexpr int Block = 8;
    for (; column + Block <= end; column += Block) {
        std::uint32_t any = 0;
        for (int i = 0; i < Block; ++i)
            any |= Word(pixels + std::ptrdiff_t{4} * (column + i));
        if (any >> 24) // cppcheck-suppress knownConditionTrueFalse; it does not see the loop
            break;
    }
    while (column < end && pixels[4 * static_cast<std::ptrdiff_t>(column) + 3] == 0)
        ++column;
    return column;
}

/** The blocks, which are sorted by row, that lie within a frame's rows once @p offset is added. */
template <typename Block>
std::pair<const Block *, std::size_t> InFrame(const Block *blocks, std::size_t count, int offset, int rows)
{
    const auto isAbove = [](const Block &block, std::int64_t row) { return block.nRow < row; };
    const std::int64_t top = -std::int64_t{offset};
    const Block *begin = std::lower_bound(blocks, blocks + count, top, isAbove);
    const Block *end = std::lower_bound(begin, blocks + count, top + rows, isAbove);
    return {begin, static_cast<std::size_t>(end - begin)};
}

bool IsSet(const BitMask &mask, int row, int column)
{
    const int bit = column - mask.nLeft;
    return row >= mask.nTop && row < mask.nTop + mask.nRows && bit >= 0 && bit < 64 * mask.nWords &&
           (mask.Row(row - mask.nTop)[bit / 64] >> (bit % 64) & 1);
}

} // namespace

void Compositor::SetImage(const QImage &image, const QRect &rect, int frameWidth, int frameHeight)
{
    if (image.cacheKey() == m_nImageKey && rect == m_rect && frameWidth == m_nFrameWidth &&
        frameHeight == m_nFrameHeight)
        return;
    Clear(frameWidth, frameHeight);
    m_rect = rect;
    FindBlocks(image);
    m_nImageKey = image.cacheKey();
}

void Compositor::Clear(int frameWidth, int frameHeight)
{
    m_nFrameWidth = frameWidth;
    m_nFrameHeight = frameHeight;
    m_nImageKey = -1;
    m_ink = {};
    m_inkBlocks.Reset(0);
    m_bInkBlocks = false;
    m_listPicture.clear();
    m_listAlphas.clear();
    m_nPreparedOpacity = -1;
    ++m_nVersion;
}

void Compositor::FindBlocks(const QImage &image)
{
    if (m_rect.isEmpty())
        return;
    const QRect visible = m_rect & QRect(0, 0, m_nFrameWidth, m_nFrameHeight);
    const std::ptrdiff_t stride = static_cast<std::ptrdiff_t>(m_nFrameWidth) * 4;
    if (visible.isEmpty() || image.depth() != 32 || image.sizeInBytes() < (visible.bottom() + 1) * stride)
        return;
    const std::uint32_t key = Word(image.constBits());
    const int end = visible.right() + 1;
    for (int row = visible.top(); row <= visible.bottom(); ++row) {
        const std::uint8_t *pixels = image.constBits() + row * stride;
        int column = SkipTransparent(pixels, visible.left(), end);
        while (column < end) {
            const bool isShown = AppendBlock(row, column, pixels, end, key);
            column = SkipTransparent(pixels, column + (isShown ? BlockPixels : 1), end);
        }
    }
}

bool Compositor::AppendBlock(int row, int column, const std::uint8_t *pixels, int end, std::uint32_t key)
{
    // The colour key hides pixels whatever its own alpha is.
    const auto shown = [&](int place) {
        const std::uint32_t pixel = Word(pixels + std::ptrdiff_t{4} * place);
        return pixel >> 24 != 0 && (pixel ^ key) << 8 != 0 ? pixel : 0;
    };
    if (shown(column) == 0)
        return false;
    std::array<std::uint8_t, BlockBytes + 1> colors = {}; // pixels are written as words of 4 bytes
    std::array<std::uint8_t, BlockPixels> alphas = {};
    for (int i = 0; i < std::min(BlockPixels, end - column); ++i) {
        const std::uint32_t pixel = shown(column + i);
        qToLittleEndian(qbswap(pixel) >> 8, colors.data() + std::ptrdiff_t{3} * i);
        alphas[i] = static_cast<std::uint8_t>(pixel >> 24);
    }
    PictureBlock block = {row, column, {}, {}};
    std::copy_n(colors.begin(), BlockBytes, block.colors.begin());
    // Alphas first: if the second allocation fails, no block is left without its alphas.
    m_listAlphas.insert(m_listAlphas.end(), alphas.begin(), alphas.end());
    m_listPicture.push_back(block);
    return true;
}

void Compositor::SetText(const TextInk &ink, QRgb textColor, QRgb outlineColor, const QRect &rect, int frameWidth,
                         int frameHeight)
{
    Clear(frameWidth, frameHeight);
    const QRect visible = rect & QRect(0, 0, frameWidth, frameHeight);
    if (rect.isEmpty() || visible.isEmpty())
        return;
    const QRgb corner = IsSet(ink.text, 0, 0) ? textColor : IsSet(ink.outline, 0, 0) ? outlineColor : 0;
    const bool showsText = (textColor ^ corner) & 0xFFFFFF;
    const bool showsOutline = (outlineColor ^ corner) & 0xFFFFFF;
    m_inkColors = InkColors::Of(textColor, outlineColor);

    // Skip the words left of the frame.
    const int skipped = std::max(0, -ink.text.nLeft / 64);
    const int words = ink.text.nWords - skipped;
    const int top = std::max(visible.top(), ink.text.nTop);
    const int rows = std::min(visible.bottom(), ink.text.nTop + ink.text.nRows - 1) - top + 1;
    if (words <= 0 || rows <= 0)
        return;
    const int left = ink.text.nLeft + 64 * skipped;
    // Allocate here, so that Blend() need not.
    m_inkBlocks.Reset((64 * static_cast<std::size_t>(words) / BlockPixels + 1) * rows);
    const std::size_t rowWords = words + 1;
    m_listText.resize(rowWords * rows);
    m_listShown.resize(rowWords * rows);
    for (int row = 0; row < rows; ++row) {
        const std::uint64_t *isText = ink.text.Row(top - ink.text.nTop + row) + skipped;
        const std::uint64_t *outline = ink.outline.Row(top - ink.text.nTop + row) + skipped;
        std::uint64_t *text = &m_listText[rowWords * row];
        std::uint64_t *shown = &m_listShown[rowWords * row];
        for (int word = 0; word < words; ++word)
            shown[word] = (showsText ? isText[word] : 0) | (showsOutline ? outline[word] & ~isText[word] : 0);
        ClearOutside(shown, words, left, visible.left(), visible.right() + 1);
        for (int word = 0; word < words; ++word)
            text[word] = isText[word] & shown[word];
        text[words] = shown[words] = 0;
    }
    m_ink = {left, top, rows, words, m_listText.data(), m_listShown.data()};
}

void Compositor::FindInkBlocks(const BlendTarget &target)
{
    if (m_bInkBlocks)
        return;
    InkBlock *end = m_inkBlocks.End();
    for (int row = m_ink.nTop; row < m_ink.nTop + m_ink.nRows; ++row) {
        const int frameRow = row + target.nOffset;
        const bool isInFrame = frameRow >= 0 && frameRow < m_nFrameHeight;
        ForInkBlocks(m_ink.Text(row), m_ink.Shown(row), m_ink.nWords,
                     [&](int column, std::uint64_t text, std::uint64_t shown) {
                         // A decoded frame is seldom in the caches: fetch its pixels while the other blocks are found.
                         if (isInFrame)
                             __builtin_prefetch(target.At(row, m_ink.nLeft + column), 1);
                         *end++ = {row, m_ink.nLeft + column, static_cast<std::uint16_t>(text),
                                   static_cast<std::uint16_t>(shown)};
                     });
    }
    m_inkBlocks.SetEnd(end);
    m_bInkBlocks = true;
}

void Compositor::PrepareWeights(int opacity)
{
    if (opacity == m_nPreparedOpacity)
        return;
    m_nPreparedOpacity = opacity;
    std::array<std::uint8_t, 256> weights;
    for (int alpha = 0; alpha < 256; ++alpha) {
        const int weight = Weight(alpha, opacity);
        weights[alpha] = static_cast<std::uint8_t>(weight == NoWeight ? Untouched(opacity) : weight);
    }
    const std::uint8_t *alphas = m_listAlphas.data();
    for (PictureBlock &block : m_listPicture) {
        block.weights.fill(weights[0]);
        for (int i = 0; i < BlockPixels; ++i)
            block.weights[i] = weights[*alphas++];
    }
}

ShownSubtitle Compositor::Shown(const Placement &placement)
{
    if (placement.nOffset != m_shownPlacement.nOffset || placement.nAlpha != m_shownPlacement.nAlpha) {
        m_shownPlacement = placement;
        ++m_nVersion;
    }
    ShownSubtitle shown = {};
    shown.nOffset = placement.nOffset;
    const int weight = Weight(255, placement.nAlpha);
    if (weight == NoWeight)
        return shown;
    PrepareWeights(placement.nAlpha);
    shown.inkColors = m_inkColors;
    shown.nInkWeight = weight;
    shown.nUntouched = Untouched(placement.nAlpha);
    shown.ink = RowsOf(m_ink, -std::int64_t{placement.nOffset}, m_nFrameHeight - std::int64_t{placement.nOffset});
    std::tie(shown.pPicture, shown.nPictureCount) =
        InFrame(m_listPicture.data(), m_listPicture.size(), placement.nOffset, m_nFrameHeight);
    if (HasInk(shown.ink) || shown.nPictureCount > 0)
        shown.nVersion = m_nVersion;
    return shown;
}

void Compositor::Blend(std::uint8_t *frame, std::ptrdiff_t linesize, const Placement &placement)
{
    const ShownSubtitle shown = Shown(placement);
    if (shown.nVersion == 0)
        return;
    const BlendTarget target = {frame, linesize, m_nFrameWidth, placement.nOffset};
    FindInkBlocks(target);
    const auto [ink, inkCount] = InFrame(m_inkBlocks.Data(), m_inkBlocks.Size(), placement.nOffset, m_nFrameHeight);
    if (shown.nInkWeight == 255)
        m_pKernel->Write(target, ink, inkCount, shown.inkColors);
    else
        m_pKernel->Mix(target, ink, inkCount, shown.inkColors, shown.nInkWeight);
    m_pKernel->MixPicture(target, shown.pPicture, shown.nPictureCount, shown.nUntouched);
}
