#include "render/fonthost.h"

#include "render/fontintegration.h"

#include <QtGui/private/qguiapplication_p.h>

namespace
{

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
