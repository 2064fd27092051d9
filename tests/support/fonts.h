#pragma once

#include <QFont>

/** A font from Debian's fonts-dejavu-core, so that every machine paints the same. */
inline QFont TestFont(int pixelSize)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixelSize);
    return font;
}
