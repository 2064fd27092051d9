#include "render/qtruntime.h"

#include "render/idledispatcher.h"
#include "render/messagesilencer.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QScopedPointer>
#include <QTextCodec>
#include <QThread>
#include <QtFontDatabaseSupport/private/qgenericunixfontdatabase_p.h>
#include <QtGui/private/qguiapplication_p.h>
#include <array>
#include <clocale>
#include <fcntl.h>
#include <langinfo.h>
#include <memory>
#include <mutex>
#include <qpa/qplatformbackingstore.h>
#include <qpa/qplatformintegration.h>
#include <qpa/qplatformwindow.h>
#include <stdexcept>
#include <string>
#include <unistd.h>

QCoreApplication *qtApp = nullptr;

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

/**
 * Stands in for a QGuiApplication where Qt looks for one while it paints text, without being an application object, and
 * gives it fonts. While it lives, no QGuiApplication can be made. Its end drops all fonts and font caches, and marks any
 * application object as closing.
 */
class FontHost : public QObject
{
public:
    /** Takes the places of QGuiApplicationPrivate::instance() and of its platform integration, which must be free. */
    FontHost() : QObject(*CreateRecord(), nullptr) {}
};

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
            (void)std::setlocale(Categories[i], m_names[i].c_str());
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

/** Never started: where our application object lives. */
QThread *idleThread = nullptr;

/** Gives the application object that is to be made on this thread a dispatcher, so that Qt makes none. */
void AvoidMainLoop()
{
    if (!QAbstractEventDispatcher::instance())
        QThread::currentThread()->setEventDispatcher(new IdleDispatcher);
}

/**
 * Parts our application object from the host's thread, which may end before it does: from its event dispatcher, which
 * would hook itself into that thread though no event loop is ever run here, and from its queue and timers.
 */
void LeaveHostThread(QCoreApplication &application)
{
    const auto *record = static_cast<QCoreApplicationPrivate *>(QObjectPrivate::get(&application));
    QAbstractEventDispatcher *dispatcher =
        record->threadData.loadRelaxed()->eventDispatcher.fetchAndStoreRelaxed(nullptr);
    QCoreApplicationPrivate::eventDispatcher = nullptr;
    if (dispatcher)
        dispatcher->closingDown();
    delete dispatcher;
    idleThread = new QThread;
    application.moveToThread(idleThread);
}

/**
 * Makes Qt's local 8-bit codec that of the locale. Qt asks ICU for it, which says UTF-8 whatever the locale. UTF-8 is
 * left where the locale says nothing but ASCII: files are more likely to be that.
 */
void SetLocaleCodec()
{
    const QByteArray codeset(nl_langinfo(CODESET)); // NOLINT(concurrency-mt-unsafe): as LocaleKeeper
    if (codeset != "ANSI_X3.4-1968")
        QTextCodec::setCodecForLocale(QTextCodec::codecForName(codeset));
}

QCoreApplication *CreateApplication()
{
    const LocaleKeeper keeper;
    const MessageSilencer silencer;
    AvoidMainLoop();
    auto application = std::make_unique<QCoreApplication>(argumentCount, arguments);
    SetLocaleCodec();
    LeaveHostThread(*application);
    return application.release();
}

/**
 * Throws where there are not enough free file descriptors to look for fonts: fontconfig would find none, for the rest of
 * the process's life.
 */
void RequireDescriptors()
{
    std::array<int, 16> descriptors; // configuration files within each other, folders, caches
    descriptors.fill(-1);
    for (int &descriptor : descriptors)
        descriptor = open("/", O_PATH | O_CLOEXEC);
    const bool areEnough = descriptors.back() >= 0;
    for (const int descriptor : descriptors) {
        if (descriptor >= 0)
            close(descriptor);
    }
    if (!areEnough)
        throw std::runtime_error("no file descriptors");
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
    static std::mutex mutex;
    const std::lock_guard<std::mutex> lock(mutex);
    if (QGuiApplicationPrivate::instance())
        return;
    RequireDescriptors();
    const MessageSilencer silencer;
    fontHost = new FontHost;
}

void InitQt()
{
    qtApp = nullptr;
    if (!QCoreApplication::instance())
        qtApp = CreateApplication();
    EnsureFonts();
}

void UnInitQt()
{
    RemoveFonts();
    if (idleThread) {
        delete idleThread;
        idleThread = nullptr;
        // From no thread at all to this one, whose data of Qt's it then frees.
        if (qtApp)
            qtApp->moveToThread(QThread::currentThread());
    }
    delete qtApp; // and not reset: this is meant
}
