#pragma once

#include <QObject>

/**
 * Stands in for a QGuiApplication where Qt looks for one while it paints text, without being an application object, and
 * gives it fonts. While it lives, no QGuiApplication can be made.
 */
class FontHost : public QObject
{
public:
    /** Takes the places of QGuiApplicationPrivate::instance() and of its platform integration, which must be free. */
    FontHost();
    /** Drops all fonts and font caches, and marks any application object as closing. */
    ~FontHost() override;
};
