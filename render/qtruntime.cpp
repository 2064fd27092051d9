#include "render/qtruntime.h"

#include "render/fonthost.h"

#include <QCoreApplication>
#include <QMutex>
#include <QtGui/private/qguiapplication_p.h>
#include <array>
#include <clocale>
#include <string>

QCoreApplication *qtApp = nullptr;

namespace
{

/** Null where the host's own QGuiApplication does its work. */
FontHost *fontHost = nullptr;

/**
 * Gives the process its locale back. An application object takes over the whole locale of the environment; a host must
 * not find a decimal comma in its printf(). LC_CTYPE stays, it names the encoding of unmarked text files.
 *
 * setlocale() is not thread-safe, and neither is making the first renderer.
 */
// NOLINTBEGIN(concurrency-mt-unsafe)
class LocaleKeeper
{
public:
    LocaleKeeper()
    {
        for (std::size_t i = 0; i < Categories.size(); ++i) {
            if (const char *name = std::setlocale(Categories[i], nullptr))
                m_names[i] = name;
        }
    }
    ~LocaleKeeper()
    {
        for (std::size_t i = 0; i < Categories.size(); ++i)
            std::setlocale(Categories[i], m_names[i].c_str());
    }
    LocaleKeeper(const LocaleKeeper &) = delete;
    LocaleKeeper &operator=(const LocaleKeeper &) = delete;

private:
    static constexpr std::array Categories = {
        LC_COLLATE, LC_MONETARY, LC_NUMERIC, LC_TIME,      LC_MESSAGES,
#ifdef LC_PAPER
        LC_PAPER,   LC_NAME,     LC_ADDRESS, LC_TELEPHONE, LC_MEASUREMENT, LC_IDENTIFICATION,
#endif
    };
    std::array<std::string, Categories.size()> m_names;
};
// NOLINTEND(concurrency-mt-unsafe)

/**
 * Silences Qt, which warns where an application object is not made on the first thread that used Qt; here every thread
 * may be the one.
 */
class MessageSilencer
{
public:
    MessageSilencer() : m_pBefore(qInstallMessageHandler(Drop)) {}
    ~MessageSilencer() { qInstallMessageHandler(m_pBefore); }
    MessageSilencer(const MessageSilencer &) = delete;
    MessageSilencer &operator=(const MessageSilencer &) = delete;

private:
    static void Drop(QtMsgType /*type*/, const QMessageLogContext & /*context*/, const QString & /*text*/) {}

    QtMessageHandler m_pBefore;
};

QCoreApplication *CreateApplication()
{
    // Qt keeps referring to the arguments.
    static int argumentCount = 1;
    static char name[] = "dummy.exe";
    static char *arguments[] = {name, nullptr};
    const LocaleKeeper keeper;
    const MessageSilencer silencer;
    return new QCoreApplication(argumentCount, arguments);
}

void RemoveFonts()
{
    // With the marks that this leaves behind, a QCoreApplication of the host's would deliver no event any more.
    const bool closing = QCoreApplicationPrivate::is_app_closing;
    const bool running = QCoreApplicationPrivate::is_app_running;
    delete fontHost;
    fontHost = nullptr;
    QCoreApplicationPrivate::is_app_closing = closing;
    QCoreApplicationPrivate::is_app_running = running;
}

} // namespace

void EnsureFonts()
{
    static QMutex mutex;
    const QMutexLocker locker(&mutex);
    if (QGuiApplicationPrivate::instance())
        return;
    const MessageSilencer silencer;
    fontHost = new FontHost;
}

void InitQt()
{
    qtApp = QCoreApplication::instance() ? nullptr : CreateApplication();
    EnsureFonts();
}

void UnInitQt()
{
    RemoveFonts();
    delete qtApp;
}
