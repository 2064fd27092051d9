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

/** Text painted in the natural look, in pixels of the frame. */
struct TextCoverage {
    ByteMask text;
    ByteMask outline; ///< has the place and size of text
    QImage colored;   ///< colour glyphs, QImage::Format_ARGB32; null if there are none
    QPoint ptColored; ///< top left corner of colored
    RowSpan lines;    ///< rows of the lines

    void Clear()
    {
        for (ByteMask *mask : {&text, &outline})
            mask->Reset(0, 0, 0, 0);
        colored = QImage();
        lines = {};
    }
};

/**
 * Paints texts antialiased, one above the other, with an outline whose width follows the frame's height. Lines of texts
 * that fit are where TextPainter puts them.
 */
class NaturalText
{
public:
    /**
     * @param frame     size as stored. Text is laid out for the frame as shown; see NaturalSettings::dPixelAspect.
     * @param texts     the first one is the lowest.
     * @param position  percent of the frame's height at which the middle of one or two lines lies. More lines have
     *                  their lower edge where two lines have it.
     * @param ink       receives the result and reuses its memory; empty without texts.
     */
    void Paint(const TextStyle &style, const QSize &frame, const QStringList &texts, int position,
               const NaturalSettings &settings, TextCoverage &ink);

private:
    /** A text that is laid out, and the rows that it is to be moved down by. */
    struct Block {
        TextLayout layout;
        int nOffset;
    };
    void Compose(const std::vector<Block> &blocks, const QSize &frame, double pixelAspect, TextCoverage &ink);
    void PaintColored(const std::vector<Block> &blocks, const QSize &frame, double pixelAspect, TextCoverage &ink);

    CoverageGlyphs m_glyphs;
};
