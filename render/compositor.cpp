#include "render/compositor.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <cstring>
#include <tuple>
#include <utility>

namespace
{

/** Marks an alpha that leaves the frame's pixel alone. A weight of 0 does not: it still makes the bytes change places.
 */
constexpr int NoWeight = -1;

/** The weight of a pixel of alpha @p pixelAlpha. The opacity counts twice, with a truncation each: this is meant. */
inline int Weight(int pixelAlpha, int opacity)
{
    const int a = pixelAlpha * opacity / 255;
    return a == 0 ? NoWeight : opacity * a / 255;
}

/** A weight that no pixel has which is drawn: what is drawn weighs over 0 at full opacity, and below 255 elsewhere. */
inline int Untouched(int opacity)
{
    return opacity == 255 ? 0 : 255;
}

/** Where a row of a mask's pixels shows: columns @p from to @p to of the frame, without the last. */
void KeepColumns(std::vector<std::uint64_t> &row, int left, int from, int to)
{
    for (int word = 0; word < static_cast<int>(row.size()); ++word) {
        const int column = left + 64 * word;
        if (column < from)
            row[word] &= from - column < 64 ? ~std::uint64_t{0} << (from - column) : 0;
        if (column + 64 > to)
            row[word] &= to > column ? ~std::uint64_t{0} >> (64 - (to - column)) : 0;
    }
}

/** Bytes blue, green, red and alpha as one word, alpha in the highest byte. */
std::uint32_t Word(const std::uint8_t *pixel)
{
    return qFromLittleEndian<std::uint32_t>(pixel);
}

/** The first column from @p column on whose pixel is not transparent; @p end when there is none. */
int SkipTransparent(const std::uint8_t *pixels, int column, int end)
{
    // A bitmap is as large as the frame, and nearly all of it is transparent.
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

std::array<std::uint8_t, 3> Bytes(QRgb color)
{
    return {static_cast<std::uint8_t>(qRed(color)), static_cast<std::uint8_t>(qGreen(color)),
            static_cast<std::uint8_t>(qBlue(color))};
}

/** Those of the blocks that lie within a frame's rows. */
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
    m_nInk = 0;
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
    // The key's own alpha is not compared.
    const auto shown = [&](int place) {
        const std::uint32_t pixel = Word(pixels + std::ptrdiff_t{4} * place);
        return pixel >> 24 != 0 && (pixel ^ key) << 8 != 0 ? pixel : 0;
    };
    if (shown(column) == 0)
        return false;
    std::array<std::uint8_t, BlockBytes + 1> colors = {}; // each pixel's word has one byte more than its colour
    std::array<std::uint8_t, BlockPixels> alphas = {};
    for (int i = 0; i < std::min(BlockPixels, end - column); ++i) {
        const std::uint32_t pixel = shown(column + i);
        qToLittleEndian(qbswap(pixel) >> 8, colors.data() + std::ptrdiff_t{3} * i);
        alphas[i] = static_cast<std::uint8_t>(pixel >> 24);
    }
    PictureBlock block = {row, column, {}, {}};
    std::copy_n(colors.begin(), BlockBytes, block.colors.begin());
    // In this order: no block is ever without its alphas, whatever fails.
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
    m_inkColors = {Bytes(textColor), Bytes(outlineColor)};

    const std::size_t room = (64 * static_cast<std::size_t>(ink.text.nWords) / BlockPixels + 1) * ink.text.nRows;
    if (m_nInkRoom < room) {
        m_pInk.reset(new InkBlock[room]); // without a value, which would cost as much as the blocks' own
        m_nInkRoom = room;
    }
    // One zero word of padding: BitsFrom() reads one word past the last.
    std::vector<std::uint64_t> shown(ink.text.nWords + 1);
    std::vector<std::uint64_t> isText(ink.text.nWords + 1);
    for (int row = std::max(0, visible.top() - ink.text.nTop); row < ink.text.nRows; ++row) {
        if (ink.text.nTop + row > visible.bottom())
            break;
        const std::uint64_t *outline = ink.outline.Row(row);
        std::copy_n(ink.text.Row(row), ink.text.nWords, isText.begin());
        for (int word = 0; word < ink.text.nWords; ++word)
            shown[word] = (showsText ? isText[word] : 0) | (showsOutline ? outline[word] & ~isText[word] : 0);
        KeepColumns(shown, ink.text.nLeft, visible.left(), visible.right() + 1);
        AppendTextRow(ink.text.nTop + row, ink.text.nLeft, isText, shown);
    }
}

void Compositor::AppendTextRow(int row, int left, const std::vector<std::uint64_t> &isText,
                               const std::vector<std::uint64_t> &shown)
{
    constexpr std::uint64_t OfBlock = (1U << BlockPixels) - 1;
    constexpr int LastPlace = 64 - BlockPixels;
    const int columns = 64 * (static_cast<int>(shown.size()) - 1);
    InkBlock *end = m_pInk.get() + m_nInk;
    for (int column = 0; column < columns;) {
        std::uint64_t bits = BitsFrom(shown.data(), column);
        const std::uint64_t text = BitsFrom(isText.data(), column);
        int place = 0;
        while (bits) {
            const int transparent = __builtin_ctzll(bits);
            place += transparent;
            if (place > LastPlace)
                break;
            bits >>= transparent;
            *end++ = {row, left + column + place, static_cast<std::uint16_t>(text >> place & OfBlock),
                      static_cast<std::uint16_t>(bits & OfBlock)};
            bits >>= BlockPixels;
            place += BlockPixels;
        }
        column += bits ? place : 64;
    }
    m_nInk = end - m_pInk.get();
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
    std::tie(shown.pInk, shown.nInkCount) = InFrame(m_pInk.get(), m_nInk, placement.nOffset, m_nFrameHeight);
    std::tie(shown.pPicture, shown.nPictureCount) =
        InFrame(m_listPicture.data(), m_listPicture.size(), placement.nOffset, m_nFrameHeight);
    if (shown.nInkCount > 0 || shown.nPictureCount > 0)
        shown.nVersion = m_nVersion;
    return shown;
}

void Compositor::Blend(std::uint8_t *frame, std::ptrdiff_t linesize, const Placement &placement)
{
    const ShownSubtitle shown = Shown(placement);
    if (shown.nVersion == 0)
        return;
    const BlendTarget target = {frame, linesize, m_nFrameWidth, placement.nOffset};
    if (shown.nInkWeight == 255)
        m_pKernel->Write(target, shown.pInk, shown.nInkCount, shown.inkColors);
    else
        m_pKernel->Mix(target, shown.pInk, shown.nInkCount, shown.inkColors, shown.nInkWeight);
    m_pKernel->MixPicture(target, shown.pPicture, shown.nPictureCount, shown.nUntouched);
}
