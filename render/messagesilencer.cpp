#include "render/messagesilencer.h"

#include <QtGlobal>
#include <atomic>
#include <mutex>

namespace
{

/** Number of silencers on this thread. */
thread_local int silencersHere = 0;

/** Number of silencers on all threads; the first installs the handler, the last removes it. */
int silencers = 0;
std::mutex mutex;
std::atomic<QtMessageHandler> handlerBefore = nullptr;

void Filter(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (silencersHere > 0)
        return;
    if (const QtMessageHandler handler = handlerBefore)
        handler(type, context, text);
}

} // namespace

MessageSilencer::MessageSilencer()
{
    ++silencersHere;
    const std::lock_guard<std::mutex> lock(mutex);
    if (silencers++ == 0)
        handlerBefore = qInstallMessageHandler(Filter);
}

MessageSilencer::~MessageSilencer()
{
    --silencersHere;
    const std::lock_guard<std::mutex> lock(mutex);
    if (--silencers > 0)
        return;
    const QtMessageHandler handler = qInstallMessageHandler(handlerBefore);
    if (handler != Filter)
        qInstallMessageHandler(handler); // installed by the host meanwhile: put it back
}
