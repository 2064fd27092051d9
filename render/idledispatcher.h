#pragma once

#include <QAbstractEventDispatcher>

/**
 * An event dispatcher that never dispatches, for an application object whose event loop does not run. Qt's own
 * dispatchers abort the process if they get no file descriptors, and hook themselves into a host's GLib main loop.
 */
class IdleDispatcher : public QAbstractEventDispatcher
{
public:
    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;

    void registerSocketNotifier(QSocketNotifier *notifier) override;
    void unregisterSocketNotifier(QSocketNotifier *notifier) override;

#if QT_VERSION_MAJOR < 6
    using Interval = int;
    bool hasPendingEvents() override;
    void flush() override;
#else
    using Interval = qint64;
#endif
    void registerTimer(int timerId, Interval interval, Qt::TimerType timerType, QObject *object) override;
    bool unregisterTimer(int timerId) override;
    bool unregisterTimers(QObject *object) override;
    QList<TimerInfo> registeredTimers(QObject *object) const override;
    int remainingTime(int timerId) override;

    void wakeUp() override;
    void interrupt() override;
};
