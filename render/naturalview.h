#pragma once

#include "parsers/parsermanager.h"
#include "render/naturalpicture.h"
#include "render/naturalsubtitle.h"
#include "render/naturaltext.h"

#include <QSize>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>

/** Everything that the natural look of a subtitle depends on. */
struct NaturalKey {
    QStringList listTexts; ///< in file order; empty with a picture
    QString strPicture;    ///< the parser's key of the picture; empty with text
    QSize frame;
    int nPosition = 0;     ///< percent
    unsigned nChanges = 0; ///< counts the changes of everything else, such as the font
    NaturalSettings settings;

    bool operator==(const NaturalKey &other) const
    {
        return listTexts == other.listTexts && strPicture == other.strPicture && frame == other.frame &&
               nPosition == other.nPosition && nChanges == other.nChanges && settings == other.settings;
    }
};

/** What the natural look of a renderer's subtitle is painted from. */
struct NaturalSource {
    ParserManager &parsers;
    const QString &strDue;            ///< what is due, as ParserManager::GetSubtitle() returned it
    long nTime;                       ///< at which it is due, in milliseconds
    int nPictureOffset;               ///< frame rows that pictures are moved down by
    std::function<TextStyle()> style; ///< called only if text is painted
};

/** Caches the natural look of a renderer's subtitle. */
class NaturalView
{
public:
    /**
     * Paints what is due unless it is cached.
     * @param key  without listTexts and strPicture, which are taken from @p source.
     * @return false if the process is ending.
     */
    bool Update(NaturalKey key, const NaturalSource &source);

    /** The cached look, without the frame's size; valid until anything is painted. Allocates nothing. */
    NaturalSubtitle Shown(int opacity);

private:
    /** Whether the cached look has that key. */
    bool IsOf(const NaturalKey &key) const { return m_bPainted && key == m_key; }
    /** Paints text. The earlier look is dropped first, so none is cached if this throws std::bad_alloc. */
    void PaintText(const NaturalKey &key, const TextStyle &style);
    /** The same for a picture. @param offset  frame rows that it is moved down by. */
    void PaintPicture(const NaturalKey &key, const ColorPicture &picture, int offset);
    void Clear();
    /** Moves the painted subtitle clear of taken rows. @param area  rows that it may be moved to. */
    void Evade(const TakenRows &taken, const RowSpan &area);

    bool m_bPainted = false;
    NaturalKey m_key;
    NaturalText m_painter;
    TextCoverage m_ink;
    InkColors m_colors = {};
    ScaledPicture m_picture;
    RowSpan m_rows;      ///< rows that all this takes up
    int m_nOpacity = -1; ///< opacity that m_nVersion is for
    std::uint64_t m_nVersion = 0;
};
