#pragma once

#include "frames/framecolors.h"
#include "frames/orientation.h"
#include "render/naturalsubtitle.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

/** What a subtitle of the natural look puts into the pixels of a frame as it is stored. */
class NaturalMap
{
public:
    /** Pixels that are looked at together for whether any is covered. */
    static constexpr int GroupPixels = 8;

    /** Shares of a row's pixels: what is left of 1 stays. */
    struct Weights {
        std::vector<float> text, outline, picture;
        std::vector<std::uint32_t> colors; ///< the picture's, numbers in Colors()
    };

    /** @param shown  what it points to must stay where it is while the map is used, or Renew() be called. */
    void Build(const NaturalSubtitle &shown, const Orientation &orientation, const FrameColors &colors);

    /** In the frame; all else stays as it is. */
    const FrameArea &Area() const { return m_area; }
    bool HasPicture() const { return m_bPicture; }
    /** Of the picture. */
    const std::vector<FrameColor> &Colors() const { return m_listColors; }

    /** For each group of pixels of a row in the area, whether any is covered; null outside. Only with a picture. */
    const std::uint8_t *Groups(int row) const;
    int GroupCount() const { return m_nGroups; }

    /** 0 to 255. */
    int Opacity() const { return m_nOpacity; }
    /** Takes the bytes from where they are now; nothing else may have become another. */
    void Renew(const NaturalSubtitle &shown);
    /** How much text and outline cover of the pixels of the area, one row after the other. */
    const std::uint8_t *Text() const { return m_pText; }
    const std::uint8_t *Outline() const { return m_pOutline; }
    /** Where a row of the area begins there. */
    std::size_t At(int row) const { return static_cast<std::size_t>(row - m_area.nTop) * m_area.nColumns; }
    const std::uint8_t *Text(int row) const { return m_pText + At(row); }
    const std::uint8_t *Outline(int row) const { return m_pOutline + At(row); }

    /** The weights of @p count pixels of a row of the frame from @p column on, which may lie outside the area. */
    void Load(int row, int column, int count, Weights &weights) const;

private:
    void TakeText(const NaturalSubtitle &shown, const Orientation &orientation);
    void TakePicture(const NaturalSubtitle &shown, const Orientation &orientation, const FrameColors &colors);
    void FindGroups();
    std::uint32_t NumberOf(std::uint32_t color, const FrameColors &colors);

    FrameArea m_area = {0, 0, 0, 0};
    int m_nOpacity = 0;
    bool m_bPicture = false;
    // Of the area; the text's are those of the subtitle itself where these lie as they are to.
    bool m_bTaken = false;
    const std::uint8_t *m_pText = nullptr;
    const std::uint8_t *m_pOutline = nullptr;
    std::vector<std::uint8_t> m_listText, m_listOutline, m_listAlphas;
    std::vector<std::uint32_t> m_listNumbers;
    std::vector<FrameColor> m_listColors;
    std::unordered_map<std::uint32_t, std::uint32_t> m_numbers; ///< of the colours
    int m_nGroups = 0;
    std::vector<std::uint8_t> m_listGroups;
};
