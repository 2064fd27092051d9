#include "render/idledispatcher.h"

bool IdleDispatcher::processEvents(QEventLoop::ProcessEventsFlags /*flags*/)
{
    return false;
}

#if QT_VERSION_MAJOR < 6
bool IdleDispatcher::hasPendingEvents()
{
    return false;
}

void IdleDispatcher::flush() {}
#endif

void IdleDispatcher::registerSocketNotifier(QSocketNotifier * /*notifier*/) {}

void IdleDispatcher::unregisterSocketNotifier(QSocketNotifier * /*notifier*/) {}

void IdleDispatcher::registerTimer(int /*timerId*/, Interval /*interval*/, Qt::TimerType /*timerType*/,
                                   QObject * /*object*/)
{
}

bool IdleDispatcher::unregisterTimer(int /*timerId*/)
{
    return false;
}

bool IdleDispatcher::unregisterTimers(QObject * /*object*/)
{
    return false;
}

QList<QAbstractEventDispatcher::TimerInfo> IdleDispatcher::registeredTimers(QObject * /*object*/) const
{
    return {};
}

int IdleDispatcher::remainingTime(int /*timerId*/)
{
    return -1;
}

void IdleDispatcher::wakeUp() {}

void IdleDispatcher::interrupt() {}
