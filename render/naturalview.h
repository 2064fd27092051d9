#pragma once

#include "render/naturalpicture.h"
#include "render/naturalsubtitle.h"
#include "render/naturaltext.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

/** What was due, and how it was to look, when the natural look was painted. */
struct NaturalKey {
    QStringList listTexts; ///< in file order; empty with a picture
    QString strPicture;    ///< a parser's key; empty with text
    QSize frame;
    int nPosition = 0;     ///< percent
    unsigned nChanges = 0; ///< of what is not here
    NaturalSettings settings;

    bool operator==(const NaturalKey &other) const
    {
        return listTexts == other.listTexts && strPicture == other.strPicture && frame == other.frame &&
               nPosition == other.nPosition && nChanges == other.nChanges && settings == other.settings;
    }
};

/** The natural look of a renderer's subtitle, kept until another is due. */
class NaturalView
{
public:
    /** Whether what is kept is of that key. */
    bool IsOf(const NaturalKey &key) const { return m_bPainted && key == m_key; }

    /** Paints text. What was kept is dropped first; without memory nothing is kept. */
    void PaintText(const NaturalKey &key, const TextStyle &style);
    /** @param offset  frame rows that the picture is moved down by. */
    void PaintPicture(const NaturalKey &key, const ColorPicture &picture, int offset);

    /** What is kept; valid until anything is painted. Allocates nothing. */
    NaturalSubtitle Shown(int opacity);

private:
    void Clear();

    bool m_bPainted = false;
    NaturalKey m_key;
    NaturalText m_painter;
    TextCoverage m_ink;
    InkColors m_colors = {};
    ScaledPicture m_picture;
    int m_nOpacity = -1; ///< that m_nVersion is for
    std::uint64_t m_nVersion = 0;
};
