#pragma once

#include "render/bytemask.h"
#include "render/coverageglyphs.h"
#include "render/naturalsubtitle.h"
#include "render/textlayout.h"
#include "render/textpainter.h"

#include <QImage>
#include <QPoint>
#include <QStringList>

#include <vector>

/** Text painted for viewers, in pixels of the frame. */
struct TextCoverage {
    ByteMask text;
    ByteMask outline; ///< of the same place and size
    QImage colored;   ///< glyphs that bring colours of their own, QImage::Format_ARGB32; null when there are none
    QPoint ptColored; ///< where it lies

    void Clear()
    {
        for (ByteMask *mask : {&text, &outline})
            mask->Reset(0, 0, 0, 0);
        colored = QImage();
    }
};

/**
 * Paints texts antialiased, with an outline of a width that follows the frame's, one above the other. Where they fit, lines
 * are where TextPainter has them.
 */
class NaturalText
{
public:
    /**
     * @param frame     as it is stored. Text is laid out in the shape that it has when it is shown.
     * @param texts     the first one lowest.
     * @param position  percent of the frame's height at which the middle of one line or two lies; the lower edge of more
     *                  lines is that of two.
     * @param ink       is painted anew in the memory that it has; nothing is covered without texts.
     */
    void Paint(const TextStyle &style, const QSize &frame, const QStringList &texts, int position,
               const NaturalSettings &settings, TextCoverage &ink);

private:
    /** A text laid out, and what is to be added to its rows. */
    struct Block {
        TextLayout layout;
        int nOffset;
    };
    void Compose(const std::vector<Block> &blocks, const QSize &frame, double pixelAspect, TextCoverage &ink);
    void PaintColored(const std::vector<Block> &blocks, const QSize &frame, double pixelAspect, TextCoverage &ink);

    CoverageGlyphs m_glyphs;
};
