#include "render/fonthost.h"

#include <QtGui/private/qguiapplication_p.h>

namespace
{

int argumentCount = 1;
char applicationName[] = "dummy.exe";
char *arguments[] = {applicationName, nullptr};

QGuiApplicationPrivate *CreateRecord()
{
    auto *record = new QGuiApplicationPrivate(argumentCount, arguments, QCoreApplication::ApplicationFlags);
    // The thread belongs to the host: its pending events and its thread-local data are not this object's to clear.
    record->threadData_clean = true;
    return record;
}

} // namespace

FontHost::FontHost() : QObject(*CreateRecord(), nullptr) {}

FontHost::~FontHost() = default;

bool FontHost::IsInstalled() const
{
    return QGuiApplicationPrivate::instance() == d_ptr.data();
}
