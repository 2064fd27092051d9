#include "render/textfont.h"

#include "api/libsubtitle.h"
#include "textio/localecodec.h"

#include <QStringList>

#include <algorithm>

namespace
{

/** UTF-16 units of a font name, or list of names, that count: fontconfig takes a minute for a megabyte. */
constexpr int MaxFamilySize = 1024;

/** Letters of greater sizes are larger than any frame and take seconds to paint. */
constexpr int MaxPointSize = 4096;

#if QT_VERSION_MAJOR < 6
void SetName(QFont &font, const QString &family)
{
    font.setFamily(family);
}

/** Sets a name of its own. Which properties the font resolves stays as it is. */
void OwnName(QFont &font, const QString &family)
{
    const uint resolved = font.resolve();
    font.setFamily(QString()); // an equal name would not be taken over
    font.setFamily(family);
    font.resolve(resolved);
}
#else
/** QFont::setFamily() of Qt 6 crashes without memory; this throws. */
void SetName(QFont &font, const QString &family)
{
    QStringList families;
    families.append(family);
    font.setFamilies(families);
}

/** As with Qt 5. */
void OwnName(QFont &font, const QString &family)
{
    const uint resolved = font.resolveMask();
    font.setFamilies({});
    SetName(font, family);
    font.setResolveMask(resolved);
}
#endif

} // namespace

QFont ChangedFont(const QFont &font, const char *family, int pointSize, int style)
{
    QFont changed = font;
    // Qt would resolve an empty family to any font at all.
    if (family)
        SetName(changed, *family ? LocaleCodec::Current()->Decode(family, qstrlen(family)).left(MaxFamilySize)
                                 : QFont().family());
    if (pointSize > 0)
        changed.setPointSize(std::min(pointSize, MaxPointSize));
    changed.setWeight((style & SUBTITLE_STYLE_BOLD) != 0 ? QFont::Bold : QFont::Normal);
    changed.setStyle((style & SUBTITLE_STYLE_ITALIC) != 0 ? QFont::StyleItalic : QFont::StyleNormal);
    return changed;
}

QFont DeepCopy(const QFont &font)
{
    QFont copy = font;
    const QString family = font.family();
    OwnName(copy, QString(family.constData(), family.size()));
    return copy;
}
