#pragma once

#include "render/naturalsubtitle.h"
#include "support/frameoracle.h"

#include <cstdint>
#include <vector>

/** A copy of a subtitle of the natural look. */
struct PlainNatural {
    explicit PlainNatural(const NaturalSubtitle &shown) :
        nWidth(shown.nFrameWidth),
        nHeight(shown.nFrameHeight),
        nOpacity(shown.nOpacity),
        colors(shown.colors),
        text(shown.text),
        picture(shown.picture),
        listText(shown.pText, shown.pText + Size(text)),
        listOutline(shown.pOutline, shown.pOutline + Size(text)),
        listPicture(shown.pPicture, shown.pPicture + Size(picture))
    {
    }
    static std::size_t Size(const FrameArea &area)
    {
        return area.IsEmpty() ? 0 : static_cast<std::size_t>(area.nColumns) * area.nRows;
    }
    /** The value of a list at a position in the frame; 0 outside its area. */
    template <typename Value>
    static Value At(const std::vector<Value> &list, const FrameArea &area, int x, int y)
    {
        const bool isInside =
            x >= area.nLeft && x < area.nLeft + area.nColumns && y >= area.nTop && y < area.nTop + area.nRows;
        return isInside ? list[static_cast<std::size_t>(y - area.nTop) * area.nColumns + (x - area.nLeft)] : Value(0);
    }

    int nWidth, nHeight, nOpacity;
    InkColors colors;
    FrameArea text, picture;
    std::vector<std::uint8_t> listText, listOutline;
    std::vector<std::uint32_t> listPicture;
};

/** The natural look, literally by its definition: text over outline, picture over both, with straight alpha. */
class NaturalOracle : public FrameOracle
{
public:
    NaturalOracle(const PlaneFrame &frame, const SubtitleFrame &description, const PlainNatural &subtitle) :
        FrameOracle(frame, description, subtitle.nWidth, subtitle.nHeight, nullptr), m_subtitle(subtitle)
    {
    }

protected:
    bool Touches(int x, int y) const override { return Of(x, y).Sum() > 0; }
    double Drawn(int component, int x, int y, int chromaX, int chromaY) const override
    {
        const Shares shares = Of(x, y);
        const bool isChroma = Frame().IsChroma(component);
        const double old = isChroma ? Frame().Get(component, chromaX, chromaY) : Frame().Get(component, x, y);
        return shares.text * CodeOf(ToRgb(m_subtitle.colors.text), component) +
               shares.outline * CodeOf(ToRgb(m_subtitle.colors.outline), component) +
               shares.picture * CodeOf(shares.color, component) + (1 - shares.Sum()) * old;
    }
    double DrawnAlpha(int component, int x, int y) const override
    {
        const double sum = Of(x, y).Sum();
        return sum * Frame().Max(component) + (1 - sum) * Frame().Get(component, x, y);
    }

private:
    struct Shares {
        double text, outline, picture;
        Rgb color; ///< of the picture
        double Sum() const { return text + outline + picture; }
    };
    static Rgb ToRgb(const std::array<std::uint8_t, 3> &color)
    {
        return {color[0] / 255.0, color[1] / 255.0, color[2] / 255.0};
    }
    Shares Of(int x, int y) const
    {
        const auto [column, row] = Place(x, y);
        const double text = PlainNatural::At(m_subtitle.listText, m_subtitle.text, column, row) / 255.0;
        const double outline = PlainNatural::At(m_subtitle.listOutline, m_subtitle.text, column, row) / 255.0;
        const std::uint32_t pixel = PlainNatural::At(m_subtitle.listPicture, m_subtitle.picture, column, row);
        const double picture = (pixel >> 24) / 255.0;
        const double opacity = m_subtitle.nOpacity / 255.0;
        return {text * (1 - picture) * opacity,
                outline * (1 - text) * (1 - picture) * opacity,
                picture * opacity,
                {(pixel >> 16 & 255) / 255.0, (pixel >> 8 & 255) / 255.0, (pixel & 255) / 255.0}};
    }

    const PlainNatural &m_subtitle;
};
