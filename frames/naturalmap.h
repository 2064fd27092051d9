#pragma once

#include "frames/framecolors.h"
#include "frames/orientation.h"
#include "render/naturalsubtitle.h"

#include <cstdint>
#include <unordered_map>
#include <vector>

/** A subtitle in the natural look as an area of pixels of a stored frame, which may be turned or mirrored. */
class NaturalMap
{
public:
    /** Number of pixels that share one flag in Groups(). */
    static constexpr int GroupPixels = 8;

    /** Weights of a row's pixels, 0 to 1. The remainder up to 1 is the weight of the old pixel. */
    struct Weights {
        std::vector<float> text, outline, picture;
        std::vector<std::uint32_t> colors; ///< colours of the picture, as indices into Colors()
    };

    /** @param shown  its coverage must stay in place while the map is used; call Renew() when it was moved. */
    void Build(const NaturalSubtitle &shown, const Orientation &orientation, const FrameColors &colors);

    /** The area of the frame that the subtitle changes. */
    const FrameArea &Area() const { return m_area; }
    bool HasPicture() const { return m_bPicture; }
    /** Colours of the picture. */
    const std::vector<FrameColor> &Colors() const { return m_listColors; }

    /**
     * Flags of a row: whether any of the GroupPixels pixels of a group is covered. Null outside the area.
     * Precondition: HasPicture().
     */
    const std::uint8_t *Groups(int row) const;
    int GroupCount() const { return m_nGroups; }

    /** @return 0 to 255. */
    int Opacity() const { return m_nOpacity; }
    /** Updates the pointers to the coverage of the same subtitle after it was moved in memory. */
    void Renew(const NaturalSubtitle &shown);
    /** How much text and outline cover of each pixel of the area (0 to 255), row by row. */
    const std::uint8_t *Text() const { return m_pText; }
    const std::uint8_t *Outline() const { return m_pOutline; }
    /** Index of the first pixel of a row in Text() and Outline(). */
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
    bool m_bTaken = false; ///< m_pText and m_pOutline point to the subtitle's own lists, which need no turning
    const std::uint8_t *m_pText = nullptr;
    const std::uint8_t *m_pOutline = nullptr;
    std::vector<std::uint8_t> m_listText, m_listOutline, m_listAlphas;
    std::vector<std::uint32_t> m_listNumbers;
    std::vector<FrameColor> m_listColors;
    std::unordered_map<std::uint32_t, std::uint32_t> m_numbers; ///< from a colour (RGB) to its index
    int m_nGroups = 0;
    std::vector<std::uint8_t> m_listGroups;
};
