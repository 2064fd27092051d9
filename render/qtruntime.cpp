#include "render/qtruntime.h"

#include "render/idledispatcher.h"
#include "render/messagesilencer.h"
#include "textio/localecodec.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QScopedPointer>
#include <QThread>
#include <QtGui/private/qguiapplication_p.h>
#include <array>
#include <clocale>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <private/qfontconfigdatabase_p.h>
#include <qpa/qplatformbackingstore.h>
#include <qpa/qplatformintegration.h>
#include <qpa/qplatformnativeinterface.h>
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
#if QT_VERSION_MAJOR >= 6
    // Which the font database of Qt 6 asks for without looking whether there is one.
    QPlatformNativeInterface *nativeInterface() const override
    {
        return &m_nativeInterface;
    }
#endif

private:
#if QT_VERSION_MAJOR >= 6
    mutable QPlatformNativeInterface m_nativeInterface;
#endif
    QScopedPointer<QPlatformFontDatabase> m_pFontDatabase{new QFontconfigDatabase};
};

// Qt keeps referring to the arguments.
int argumentCount = 1;
char applicationName[] = "dummy.exe";
char *arguments[] = {applicationName, nullptr};

QGuiApplicationPrivate *CreateRecord()
{
    // The record owns the integration.
    QGuiApplicationPrivate::platform_integration = new FontIntegration;
#if QT_VERSION_MAJOR < 6
    auto *record = new QGuiApplicationPrivate(argumentCount, arguments, QCoreApplication::ApplicationFlags);
#else
    auto *record = new QGuiApplicationPrivate(argumentCount, arguments);
#endif
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
 * not find a decimal comma in its printf().
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
        LC_CTYPE, LC_COLLATE, LC_MONETARY, LC_NUMERIC,   LC_TIME,        LC_MESSAGES,
#ifdef LC_PAPER
        LC_PAPER, LC_NAME,    LC_ADDRESS,  LC_TELEPHONE, LC_MEASUREMENT, LC_IDENTIFICATION,
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

QCoreApplication *CreateApplication()
{
    const LocaleKeeper keeper;
    const MessageSilencer silencer;
    AvoidMainLoop();
    auto application = std::make_unique<QCoreApplication>(argumentCount, arguments);
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
#if QT_VERSION_MAJOR >= 6
    // Without one the font database of Qt 6 ends the process.
    if (!QCoreApplication::instance())
        qtApp = CreateApplication();
#endif
    const MessageSilencer silencer;
    fontHost = new FontHost;
}

void InitQt()
{
    qtApp = nullptr;
    if (QCoreApplication::instance()) {
        LocaleCodec::UseQt();
    } else {
        LocaleCodec::UseEnvironment();
        (void)LocaleCodec::Current(); // loaded now, where a failure refuses the renderer
        qtApp = CreateApplication();
    }
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
