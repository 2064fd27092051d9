#include "render/qtruntime.h"

#include "render/idledispatcher.h"
#include "render/messagesilencer.h"
#include "render/qtuse.h"
#include "textio/localecodec.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QScopedPointer>
#include <QThread>
#include <QtGui/private/qguiapplication_p.h>
#include <array>
#include <climits>
#include <clocale>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <private/qfontconfigdatabase_p.h>
#include <pthread.h>
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
 * A platform integration that provides fonts only: no plugin file, no display, no screen. With it, text can be painted
 * into images in a process without a QGuiApplication.
 */
class FontIntegration : public QPlatformIntegration
{
public:
    QPlatformFontDatabase *fontDatabase() const override { return m_pFontDatabase.data(); }
    QPlatformWindow *createPlatformWindow(QWindow * /*window*/) const override { return nullptr; }
    QPlatformBackingStore *createPlatformBackingStore(QWindow * /*window*/) const override { return nullptr; }
    QAbstractEventDispatcher *createEventDispatcher() const override { return nullptr; }
#if QT_VERSION_MAJOR >= 6
    // The font database of Qt 6 uses this without checking for null.
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

// Qt keeps references to these.
int argumentCount = 1;
char applicationName[] = "dummy.exe";
char *arguments[] = {applicationName, nullptr};

QGuiApplicationPrivate *CreateApplicationPrivate()
{
    // It owns the integration.
    QGuiApplicationPrivate::platform_integration = new FontIntegration;
#if QT_VERSION_MAJOR < 6
    auto *appPrivate = new QGuiApplicationPrivate(argumentCount, arguments, QCoreApplication::ApplicationFlags);
#else
    auto *appPrivate = new QGuiApplicationPrivate(argumentCount, arguments);
#endif
    // The thread belongs to the host: the destructor must not clear its pending events and thread-local data.
    appPrivate->threadData_clean = true;
    return appPrivate;
}

/**
 * Provides what Qt looks for in a QGuiApplication while it paints text, above all fonts, without being an application
 * object. While it lives, no QGuiApplication can be created. Its destructor drops all fonts and font caches, and marks
 * any application object as closing.
 */
class FontHost : public QObject
{
public:
    /** Becomes QGuiApplicationPrivate::instance() and sets the platform integration; there must be neither before. */
    FontHost() : QObject(*CreateApplicationPrivate(), nullptr) {}
};

/** Null while the host's own QGuiApplication provides the fonts. */
FontHost *fontHost = nullptr;

/**
 * Restores the process's locale when it is destroyed. Creating an application object sets the whole locale of the
 * environment, and a host must not suddenly find decimal commas in the output of its printf().
 *
 * setlocale() is not thread-safe, and neither is creating the first renderer.
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

/** Never started; our application object lives on it. */
QThread *idleThread = nullptr;

/**
 * Sets a dispatcher on this thread before an application object is created there, so that Qt does not create its own.
 */
void AvoidMainLoop()
{
    if (!QAbstractEventDispatcher::instance())
        QThread::currentThread()->setEventDispatcher(new IdleDispatcher);
}

/**
 * Detaches our application object from the host's thread, which may end before it does: from its event dispatcher,
 * which would hook itself into that thread though no event loop ever runs here, and from its queue and timers.
 */
void LeaveHostThread(QCoreApplication &application)
{
    const auto *appPrivate = static_cast<QCoreApplicationPrivate *>(QObjectPrivate::get(&application));
    QAbstractEventDispatcher *dispatcher =
        appPrivate->threadData.loadRelaxed()->eventDispatcher.fetchAndStoreRelaxed(nullptr);
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

/** Finds the key under which Qt 5 keeps this thread's data, the pointer that all objects of the thread have as well. */
void FindThreadDataKey()
{
    QObject object;
    const QThreadData *data = QObjectPrivate::get(&object)->threadData.loadRelaxed();
    for (pthread_key_t key = 0; key < PTHREAD_KEYS_MAX; ++key) {
        if (pthread_getspecific(key) == data)
            QtUse::SetThreadDataKey(key);
    }
}

/**
 * Throws if there are too few free file descriptors to look for fonts: fontconfig would find none until the process
 * ends.
 */
void RequireDescriptors()
{
    std::array<int, 16> descriptors; // for nested configuration files, folders and caches
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
    // Deleting the font host sets both flags. With them, a host's QCoreApplication would deliver no more events.
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
    // The font database of Qt 6 ends the process if there is no application object.
    if (!QCoreApplication::instance())
        qtApp = CreateApplication();
#endif
    const MessageSilencer silencer;
    fontHost = new FontHost;
}

void InitQt()
{
    FindThreadDataKey();
    qtApp = nullptr;
    if (QCoreApplication::instance()) {
        LocaleCodec::UseQt();
    } else {
        LocaleCodec::UseEnvironment();
        (void)LocaleCodec::Current(); // load it now, where a failure refuses the renderer
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
        // Move the application back to this thread, so that deleting it frees this thread's Qt data.
        if (qtApp)
            qtApp->moveToThread(QThread::currentThread());
    }
    delete qtApp; // Intentional: not reset, InitQt() sets it anew
}
