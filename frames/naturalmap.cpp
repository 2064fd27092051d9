#include "frames/naturalmap.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace
{

/** Converts an area of the displayed picture to the stored frame. */
FrameArea InFrame(const FrameArea &area, const Orientation &orientation)
{
    if (area.IsEmpty())
        return {0, 0, 0, 0};
    int top = area.nTop;
    int left = area.nLeft;
    int bottom = area.nTop + area.nRows - 1;
    int right = area.nLeft + area.nColumns - 1;
    orientation.ToFrame(top, left);
    orientation.ToFrame(bottom, right);
    return {std::min(left, right), std::min(top, bottom), std::abs(right - left) + 1, std::abs(bottom - top) + 1};
}

FrameArea Union(const FrameArea &a, const FrameArea &b)
{
    if (a.IsEmpty() || b.IsEmpty())
        return a.IsEmpty() ? b : a;
    const int left = std::min(a.nLeft, b.nLeft);
    const int top = std::min(a.nTop, b.nTop);
    return {left, top, std::max(a.nLeft + a.nColumns, b.nLeft + b.nColumns) - left,
            std::max(a.nTop + a.nRows, b.nTop + b.nRows) - top};
}

/** Calls @p call(from, to) for each pixel of an area with its index in that area and in the area @p whole of the frame. */
template <typename Call>
void ForPixels(const FrameArea &area, const FrameArea &whole, const Orientation &orientation, Call call)
{
    std::size_t from = 0;
    for (int row = 0; row < area.nRows; ++row) {
        for (int column = 0; column < area.nColumns; ++column, ++from) {
            int y = area.nTop + row;
            int x = area.nLeft + column;
            orientation.ToFrame(y, x);
            call(from, static_cast<std::size_t>(y - whole.nTop) * whole.nColumns + (x - whole.nLeft));
        }
    }
}

} // namespace

void NaturalMap::Build(const NaturalSubtitle &shown, const Orientation &orientation, const FrameColors &colors)
{
    m_area = Union(InFrame(shown.text, orientation), InFrame(shown.picture, orientation));
    m_nOpacity = shown.nOpacity;
    m_bPicture = !shown.picture.IsEmpty();
    m_listColors.clear();
    m_numbers.clear();
    m_listAlphas.clear();
    m_listNumbers.clear();
    TakeText(shown, orientation);
    if (!m_bPicture)
        return;
    TakePicture(shown, orientation, colors);
    FindGroups();
}

void NaturalMap::TakeText(const NaturalSubtitle &shown, const Orientation &orientation)
{
    m_bTaken = !m_bPicture && orientation.IsUpright();
    if (m_bTaken) {
        Renew(shown);
        return;
    }
    const std::size_t count = static_cast<std::size_t>(m_area.nColumns) * m_area.nRows;
    m_listText.assign(count, 0);
    m_listOutline.assign(count, 0);
    if (!shown.text.IsEmpty()) {
        ForPixels(shown.text, m_area, orientation, [&](std::size_t from, std::size_t to) {
            m_listText[to] = shown.pText[from];
            m_listOutline[to] = shown.pOutline[from];
        });
    }
    m_pText = m_listText.data();
    m_pOutline = m_listOutline.data();
}

void NaturalMap::Renew(const NaturalSubtitle &shown)
{
    if (!m_bTaken)
        return;
    m_pText = shown.pText;
    m_pOutline = shown.pOutline;
}

void NaturalMap::TakePicture(const NaturalSubtitle &shown, const Orientation &orientation, const FrameColors &colors)
{
    const std::size_t count = static_cast<std::size_t>(m_area.nColumns) * m_area.nRows;
    m_listAlphas.assign(count, 0);
    m_listNumbers.assign(count, 0);
    std::uint32_t lastColor = 0;
    std::uint32_t lastNumber = NumberOf(lastColor, colors);
    ForPixels(shown.picture, m_area, orientation, [&](std::size_t from, std::size_t to) {
        const std::uint32_t pixel = shown.pPicture[from];
        if (pixel >> 24 == 0)
            return;
        // Most pixels have the colour of the one before.
        if ((pixel & 0xFFFFFF) != lastColor) {
            lastColor = pixel & 0xFFFFFF;
            lastNumber = NumberOf(lastColor, colors);
        }
        m_listAlphas[to] = static_cast<std::uint8_t>(pixel >> 24);
        m_listNumbers[to] = lastNumber;
    });
}

std::uint32_t NaturalMap::NumberOf(std::uint32_t color, const FrameColors &colors)
{
    const auto [at, isNew] = m_numbers.try_emplace(color, static_cast<std::uint32_t>(m_listColors.size()));
    if (isNew)
        m_listColors.push_back(
            colors.Convert({static_cast<std::uint8_t>(color >> 16), static_cast<std::uint8_t>(color >> 8),
                            static_cast<std::uint8_t>(color)}));
    return at->second;
}

void NaturalMap::FindGroups()
{
    m_nGroups = (m_area.nColumns + GroupPixels - 1) / GroupPixels;
    m_listGroups.assign(static_cast<std::size_t>(m_nGroups) * m_area.nRows, 0);
    std::uint8_t *group = m_listGroups.data();
    const std::size_t whole = m_area.nColumns / GroupPixels;
    const std::size_t rest = m_area.nColumns % GroupPixels;
    const auto any = [](const std::uint8_t *bytes, std::size_t count) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes, count);
        return word;
    };
    for (int row = 0; row < m_area.nRows; ++row) {
        const std::size_t at = static_cast<std::size_t>(row) * m_area.nColumns;
        const std::uint8_t *text = m_pText + at;
        const std::uint8_t *outline = m_pOutline + at;
        const std::uint8_t *alphas = m_listAlphas.data() + at;
        for (std::size_t i = 0; i < whole; ++i) {
            const std::size_t first = i * GroupPixels;
            *group++ = (any(text + first, GroupPixels) | any(outline + first, GroupPixels) |
                        any(alphas + first, GroupPixels)) != 0;
        }
        const std::size_t last = whole * GroupPixels;
        if (rest > 0)
            *group++ = (any(text + last, rest) | any(outline + last, rest) | any(alphas + last, rest)) != 0;
    }
}

const std::uint8_t *NaturalMap::Groups(int row) const
{
    if (row < m_area.nTop || row >= m_area.nTop + m_area.nRows)
        return nullptr;
    return m_listGroups.data() + static_cast<std::size_t>(row - m_area.nTop) * m_nGroups;
}

void NaturalMap::Load(int row, int column, int count, Weights &weights) const
{
    const int first = std::max(column, m_area.nLeft);
    const int end = std::min(column + count, m_area.nLeft + m_area.nColumns);
    const bool isOutside = row < m_area.nTop || row >= m_area.nTop + m_area.nRows || first >= end;
    for (auto *list : {&weights.text, &weights.outline, &weights.picture})
        list->assign(count, 0.0F);
    weights.colors.assign(count, 0);
    if (isOutside)
        return;
    const std::size_t at = At(row) + (first - m_area.nLeft);
    const std::size_t to = first - column;
    const std::size_t pixels = end - first;
    const std::uint8_t *text = m_pText + at;
    const std::uint8_t *outline = m_pOutline + at;
    const float opacity = static_cast<float>(m_nOpacity) / 255;
    const float ofText = opacity / 255;
    const float ofOutline = opacity / (255 * 255);
    for (std::size_t i = 0; i < pixels; ++i) {
        weights.text[to + i] = static_cast<float>(text[i]) * ofText;
        weights.outline[to + i] = static_cast<float>((255 - text[i]) * outline[i]) * ofOutline;
    }
    for (std::size_t i = 0; i < pixels; ++i) {
        const float alpha = static_cast<float>(m_listAlphas[at + i]) / 255;
        weights.text[to + i] *= 1 - alpha;
        weights.outline[to + i] *= 1 - alpha;
        weights.picture[to + i] = alpha * opacity;
        weights.colors[to + i] = m_listNumbers[at + i];
    }
}
