#pragma once

#include <QFont>

/** A font of Debian's package fonts-dejavu-core, so that text is the same on every machine. */
inline QFont TestFont(int pixelSize)
{
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixelSize);
    return font;
}
