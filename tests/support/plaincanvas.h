#pragma once

#include "support/pictureunit.h"

#include <array>
#include <cstdint>
#include <vector>

/** The expected content of the decoder's canvas after whole units, drawn pixel by pixel. */
class PlainCanvas
{
public:
    PlainCanvas(int nWidth, int nHeight) :
        m_nWidth(nWidth),
        m_nHeight(nHeight),
        m_listLuma(Size()),
        m_listU(Size(), 128),
        m_listV(Size(), 128),
        m_listAlpha(Size())
    {
    }

    /** Draws a unit. Of earlier ones only the alpha is cleared, their colours stay. */
    PlainCanvas &Draw(const PictureUnit &unit, const std::array<unsigned int, 16> &palette)
    {
        m_listAlpha.assign(Size(), 0);
        for (int y = 0; y < unit.nHeight; ++y) {
            for (int x = 0; x < unit.nWidth; ++x) {
                const unsigned nCode = unit.listPixels[static_cast<std::size_t>(y) * unit.nWidth + x];
                const unsigned nColour = palette[unit.nColours >> (4 * nCode) & 15];
                const std::size_t at = static_cast<std::size_t>(unit.nY + y) * m_nWidth + unit.nX + x;
                m_listLuma[at] = static_cast<std::uint8_t>(nColour);
                m_listU[at] = static_cast<std::uint8_t>(nColour >> 8);
                m_listV[at] = static_cast<std::uint8_t>(nColour >> 16);
                m_listAlpha[at] = static_cast<std::uint8_t>((unit.nContrasts >> (4 * nCode) & 15) * 16);
            }
        }
        return *this;
    }

    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    const std::vector<std::uint8_t> &Luma() const { return m_listLuma; }
    const std::vector<std::uint8_t> &U() const { return m_listU; }
    const std::vector<std::uint8_t> &V() const { return m_listV; }
    const std::vector<std::uint8_t> &Alpha() const { return m_listAlpha; }

    /** The bytes of the picture in the size of the canvas. */
    std::vector<std::uint8_t> Image() const
    {
        std::vector<std::uint8_t> image;
        for (std::size_t i = 0; i < m_listLuma.size(); ++i)
            image.insert(image.end(), {m_listLuma[i], m_listLuma[i], m_listLuma[i], m_listAlpha[i]});
        return image;
    }

private:
    std::size_t Size() const { return static_cast<std::size_t>(m_nWidth) * m_nHeight; }

    int m_nWidth;
    int m_nHeight;
    std::vector<std::uint8_t> m_listLuma;
    std::vector<std::uint8_t> m_listU;
    std::vector<std::uint8_t> m_listV;
    std::vector<std::uint8_t> m_listAlpha;
};
