#pragma once

#include <QObject>

/**
 * Stands in for a QGuiApplication where Qt looks for one while it paints text, without being an application object.
 * Made on the thread, and with the application object, that it will be destroyed with.
 */
class FontHost : public QObject
{
public:
    /** Takes the place of QGuiApplicationPrivate::instance(), which must be free. */
    FontHost();
    /** Drops all fonts, font caches and the platform integration, and marks any application object as closing. */
    ~FontHost() override;

    /** False once a QGuiApplication of the host's has taken the place over; then it must not be destroyed. */
    bool IsInstalled() const;
};
