#include "render/fonthost.h"

#include <QScopedPointer>
#include <QtFontDatabaseSupport/private/qgenericunixfontdatabase_p.h>
#include <QtGui/private/qguiapplication_p.h>
#include <qpa/qplatformbackingstore.h>
#include <qpa/qplatformintegration.h>
#include <qpa/qplatformwindow.h>

namespace
{

/**
 * A platform integration whose only service is the font database: no plugin file, no display, no screen. It lets text
 * be painted into images in a process that has no QGuiApplication.
 */
class FontIntegration : public QPlatformIntegration
{
public:
    QPlatformFontDatabase *fontDatabase() const override { return m_pFontDatabase.data(); }
    QPlatformWindow *createPlatformWindow(QWindow * /*window*/) const override { return nullptr; }
    QPlatformBackingStore *createPlatformBackingStore(QWindow * /*window*/) const override { return nullptr; }
    QAbstractEventDispatcher *createEventDispatcher() const override { return nullptr; }

private:
    QScopedPointer<QPlatformFontDatabase> m_pFontDatabase{new QGenericUnixFontDatabase};
};

// Qt keeps referring to the arguments.
int argumentCount = 1;
char applicationName[] = "dummy.exe";
char *arguments[] = {applicationName, nullptr};

QGuiApplicationPrivate *CreateRecord()
{
    // The record owns the integration.
    QGuiApplicationPrivate::platform_integration = new FontIntegration;
    auto *record = new QGuiApplicationPrivate(argumentCount, arguments, QCoreApplication::ApplicationFlags);
    // The thread belongs to the host: its pending events and its thread-local data are not this object's to clear.
    record->threadData_clean = true;
    return record;
}

} // namespace

FontHost::FontHost() : QObject(*CreateRecord(), nullptr) {}

FontHost::~FontHost() = default;
