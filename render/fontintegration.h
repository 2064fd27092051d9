#pragma once

#include <QScopedPointer>
#include <qpa/qplatformintegration.h>

/**
 * A platform integration whose only service is the font database: no plugin file, no display, no screen. It lets text
 * be painted into images in a process that has no QGuiApplication.
 */
class FontIntegration : public QPlatformIntegration
{
public:
    FontIntegration();
    ~FontIntegration() override;

    QPlatformFontDatabase *fontDatabase() const override;

    QPlatformWindow *createPlatformWindow(QWindow *window) const override;
    QPlatformBackingStore *createPlatformBackingStore(QWindow *window) const override;
    QAbstractEventDispatcher *createEventDispatcher() const override;

private:
    QScopedPointer<QPlatformFontDatabase> m_pFontDatabase;
};
