#include "render/fontintegration.h"

#include <QtFontDatabaseSupport/private/qgenericunixfontdatabase_p.h>
#include <qpa/qplatformbackingstore.h>
#include <qpa/qplatformwindow.h>

FontIntegration::FontIntegration() : m_pFontDatabase(new QGenericUnixFontDatabase) {}

FontIntegration::~FontIntegration() = default;

QPlatformFontDatabase *FontIntegration::fontDatabase() const
{
    return m_pFontDatabase.data();
}

QPlatformWindow *FontIntegration::createPlatformWindow(QWindow * /*window*/) const
{
    return nullptr;
}

QPlatformBackingStore *FontIntegration::createPlatformBackingStore(QWindow * /*window*/) const
{
    return nullptr;
}

QAbstractEventDispatcher *FontIntegration::createEventDispatcher() const
{
    return nullptr;
}
