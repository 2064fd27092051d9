// A host of a given kind: loads the library, renders, and prints a checksum of the frames. For hosts_test.
// usage: hostprobe LIBRARY KIND TASK   KIND: none, core or gui, the application object that the host has
#include "libsubtitle.h"

#include "support/sanitizerhooks.h"
#include "support/temporaryfolder.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTimer>
#include <QtGui/private/qguiapplication_p.h>
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <dlfcn.h>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

// Suppressions for LeakSanitizer, if it is built in: leaks of Qt's offscreen platform and others, not the library's.
const char *__lsan_default_suppressions()
{
    return "leak:libqoffscreen\nleak:QScreen::QScreen\nleak:QPlatformScreen::QPlatformScreen\n"
           "leak:QWindowSystemInterface::handleScreenAdded\n"
           "leak:argz_add_sep\n"; // glibc, if LOCPATH is set
}
const char *__lsan_default_options()
{
    return "print_suppressions=0";
}

namespace
{

constexpr int Width = 640;
constexpr int Height = 360;

void Expect(bool condition, const char *what)
{
    if (condition)
        return;
    std::printf("failed: %s\n", what);
    std::exit(1);
}

/** The library's functions, looked up as by a host that is not linked with the library. */
struct Library {
    // Tasks call dlclose() themselves, if at all.
    // cppcheck-suppress noDestructor
    explicit Library(const char *path) : pLibrary(dlopen(path, RTLD_NOW | RTLD_LOCAL))
    {
        if (!pLibrary)
            std::printf("%s\n", dlerror());
        Expect(pLibrary != nullptr, "dlopen");
        Find(pCreate, "CreateVideoSubtitle");
        Find(pDestroy, "DestroyVideoSubtitle");
        Find(pSetFile, "SetSubtitleFile");
        Find(pSetFont, "SetSubtitleFontParam");
        Find(pSetTime, "SetSubtitleTimeStamp");
        Find(pProcess, "ProcessSubtitleFrame");
    }
    Library(const Library &) = delete;
    Library &operator=(const Library &) = delete;

    template <typename Function>
    void Find(Function &function, const char *name) const
    {
        function = reinterpret_cast<Function>(dlsym(pLibrary, name));
        Expect(function != nullptr, name);
    }

    void *pLibrary;
    decltype(&CreateVideoSubtitle) pCreate;
    decltype(&DestroyVideoSubtitle) pDestroy;
    decltype(&SetSubtitleFile) pSetFile;
    decltype(&SetSubtitleFontParam) pSetFont;
    decltype(&SetSubtitleTimeStamp) pSetTime;
    decltype(&ProcessSubtitleFrame) pProcess;
};

using Pixels = std::vector<uint8_t>;

Pixels FrameAt(const Library &library, void *subtitle, long ms)
{
    Pixels pixels(Width * Height * 3, 90);
    AVPicture frame = {{pixels.data()}, {Width * 3}};
    library.pSetTime(subtitle, ms);
    library.pProcess(subtitle, &frame);
    return pixels;
}

/** The number of colours other than the frame's, the text's and the outline's. */
std::size_t CountOtherColors(const Pixels &pixels)
{
    std::set<std::array<uint8_t, 3>> colors;
    for (std::size_t i = 0; i < pixels.size(); i += 3)
        colors.insert({pixels[i], pixels[i + 1], pixels[i + 2]});
    for (const uint8_t grey : {90, 255, 10})
        colors.erase({grey, grey, grey});
    return colors.size();
}

/** Shows text in several scripts. All frames must differ, so none shows empty boxes; emoji must have colours. */
unsigned RenderScripts(const Library &library)
{
    const TemporaryFolder folder;
    const char *texts[] = {"Hello", "你", "好", "م", "ع", "😀👍", "مرحبا 世界 Hello"};
    std::string srt = "\xEF\xBB\xBF";
    int second = 1;
    for (const char *text : texts) {
        const std::string time = "00:00:0" + std::to_string(second++);
        srt += time + ",000 --> " + time + ",900\n" + text + "\n\n";
    }
    void *subtitle = library.pCreate(Width, Height);
    Expect(library.pSetFont(subtitle, "DejaVu Sans", 24, 0) == 0, "SetSubtitleFontParam");
    Expect(library.pSetFile(subtitle, folder.Write("scripts.srt", srt).c_str(), 0) == 0, "SetSubtitleFile");

    std::set<Pixels> frames;
    unsigned checksum = 0;
    for (int i = 1; i < second; ++i) {
        const Pixels pixels = FrameAt(library, subtitle, i * 1000 + 500);
        frames.insert(pixels);
        for (const uint8_t byte : pixels)
            checksum = checksum * 31 + byte;
        const bool emoji = i == 6;
        Expect((CountOtherColors(pixels) > 20) == emoji, emoji ? "emoji have colours" : "text has two colours");
    }
    Expect(frames.size() == std::size(texts), "every text has glyphs of its own");
    Expect(CountOtherColors(FrameAt(library, subtitle, 1)) == 0, "no text at the start");
    library.pDestroy(subtitle);
    return checksum;
}

/** The first handle needs some file descriptors. Creating it with too few must fail without harm. */
void CreateWithoutDescriptors(const Library &library)
{
    rlimit limit = {};
    getrlimit(RLIMIT_NOFILE, &limit);
    const int first = dup(0);
    close(first);
    void *subtitle = nullptr;
    int refused = 0;
    for (int free = 0; !subtitle; ++free) {
        const rlimit few = {static_cast<rlim_t>(first) + free, limit.rlim_max};
        setrlimit(RLIMIT_NOFILE, &few);
        subtitle = library.pCreate(Width, Height);
        refused += !subtitle;
        setrlimit(RLIMIT_NOFILE, &limit);
    }
    Expect(refused > 0 && refused < 100, "the first handle needs some descriptors");
    library.pDestroy(subtitle);
}

std::size_t CountOpenFiles()
{
    const std::filesystem::directory_iterator files("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(files), end(files)));
}

std::unique_ptr<QCoreApplication> CreateApplication(const std::string &kind)
{
    static char name[] = "host";
    static char option[] = "-platform";
    static char platform[] = "offscreen";
    // Filled in each time, as Qt removes the arguments that it knows.
    static char *argv[] = {nullptr, nullptr, nullptr, nullptr};
    static int argc;
    argv[0] = name;
    argv[1] = option;
    argv[2] = platform;
    argc = 3;
    if (kind == "core")
        return std::make_unique<QCoreApplication>(argc, argv);
    if (kind == "gui")
        return std::make_unique<QGuiApplication>(argc, argv);
    return nullptr;
}

void CheckEventsArrive()
{
    QTimer::singleShot(0, QCoreApplication::instance(), [] { QCoreApplication::exit(9); });
    Expect(QCoreApplication::exec() == 9, "the host's events arrive");
    Expect(!QCoreApplication::closingDown(), "the host's application is not closing");
}

/** The host's own QGuiApplication must work as if the library had never been loaded. */
void CheckGuiApplicationWorks()
{
    Expect(QGuiApplication::screens().size() == 1, "one screen, the host's");
    Expect(QGuiApplication::platformName() == QStringLiteral("offscreen"), "the host's platform");
    QImage image(200, 50, QImage::Format_ARGB32);
    image.fill(0);
    const QImage blank = image.copy();
    QPainter painter(&image);
    painter.drawText(image.rect(), 0, QStringLiteral("text"));
    painter.end();
    Expect(image != blank, "the host paints text");
    CheckEventsArrive();
}

void RunGuiApplication()
{
    const auto application = CreateApplication("gui");
    CheckGuiApplicationWorks();
}

void RunOnThread(const std::function<void()> &task)
{
    std::thread thread(task);
    thread.join();
}

/** The same text in the encoding of a locale and in UTF-8. */
struct LocalText {
    const char *pTask;
    const char *pLocal;
    const char *pUtf8;
};

const LocalText *FindLocalText(const std::string &task)
{
    static const LocalText texts[] = {{"latin1", "na\xEFve \xE4\xF6\xFC", "naïve äöü"},
                                      {"cp1251", "\xC4\xE0 \xB8", "Да ё"},
                                      {"big5", "\xA6r\xB9\xF5", "字幕"}};
    const auto *const found =
        std::find_if(std::begin(texts), std::end(texts), [&](const LocalText &text) { return task == text.pTask; });
    return found == std::end(texts) ? nullptr : found;
}

void CompareEncodings(const Library &library, const LocalText &text)
{
    const TemporaryFolder folder;
    const std::string times = "00:00:01,000 --> 00:00:02,000\n";
    const std::string local = folder.Write(text.pLocal + std::string(".srt"), times + text.pLocal + "\n");
    const std::string marked = folder.Write("b.srt", "\xEF\xBB\xBF" + times + text.pUtf8 + "\n");
    void *subtitle = library.pCreate(Width, Height);
    library.pSetFile(subtitle, marked.c_str(), 0);
    const Pixels expected = FrameAt(library, subtitle, 1500);
    library.pSetTime(subtitle, 1);
    Expect(library.pSetFile(subtitle, local.c_str(), 0) == 0, "a file whose name is in the locale's encoding");
    Expect(FrameAt(library, subtitle, 1500) == expected, "unmarked text and names are in the locale's encoding");
    Expect(expected != FrameAt(library, subtitle, 2500), "the text shows");
    library.pDestroy(subtitle);
}

unsigned RunTask(const char *path, const std::string &task)
{
    const Library library(path);
    if (task == "descriptors")
        CreateWithoutDescriptors(library);
    unsigned checksum = RenderScripts(library);
    const auto again = [&] { Expect(RenderScripts(library) == checksum, "the same frames again"); };
    if (task == "cycles") {
        void *subtitle = library.pCreate(64, 64);
        library.pDestroy(subtitle);
        const std::size_t openFiles = CountOpenFiles();
        for (int i = 0; i < 200; ++i)
            library.pDestroy(library.pCreate(64 + i, 64));
        Expect(CountOpenFiles() == openFiles, "no file stays open");
        again();
    } else if (task == "reload") {
        for (int i = 0; i < 3; ++i) {
            dlclose(library.pLibrary);
            Expect(RenderScripts(Library(path)) == checksum, "the same frames from the reloaded library");
        }
    } else if (task == "latergui") {
        RunGuiApplication();
        again();
        RunGuiApplication();
    } else if (task == "threads") {
        RunOnThread(again);
        RunOnThread(again);
        again();
    } else if (task == "threadgoes") {
        // The thread that made the first handle ends before the last handle is destroyed.
        void *subtitle = nullptr;
        RunOnThread([&] { subtitle = library.pCreate(64, 64); });
        again();
        library.pDestroy(subtitle);
        RunOnThread([&] { subtitle = library.pCreate(64, 64); });
        library.pDestroy(subtitle);
        subtitle = library.pCreate(64, 64);
        RunOnThread([&] { library.pDestroy(subtitle); });
        again();
    } else if (task == "oddscripts") {
        // Scripts that no font has, and no font family chosen by the host: Qt must print no warnings.
        void *subtitle = library.pCreate(Width, Height);
        library.pSetFont(subtitle, "", 20, 0);
        const TemporaryFolder folder;
        const std::string file = folder.Write("a.srt", "\xEF\xBB\xBF"
                                                       "00:00:01,000 --> 00:00:02,000\nहिन्दी বাংলা ភាសាខ្មែរ ไทย ଓଡ଼ିଆ\n");
        library.pSetFile(subtitle, file.c_str(), 0);
        Expect(CountOtherColors(FrameAt(library, subtitle, 500)) == 0, "nothing due");
        FrameAt(library, subtitle, 1500);
        library.pDestroy(subtitle);
    } else if (const LocalText *local = FindLocalText(task)) {
        CompareEncodings(library, *local);
    } else if (task == "appgoes") {
        // The host deletes its application object while a renderer exists.
        void *subtitle = library.pCreate(64, 64);
        delete QCoreApplication::instance();
        again();
        library.pDestroy(subtitle);
    } else {
        Expect(task == "render" || task == "descriptors", "known task");
        again();
    }
    return checksum;
}

} // namespace

int main(int argc, char **argv)
{
    Expect(argc == 4, "three arguments");
    const std::string kind = argv[2];
    const std::string task = argv[3];
    auto application = CreateApplication(kind);
    const QCoreApplication *before = QCoreApplication::instance();
    bool posted = false;
    if (application)
        QMetaObject::invokeMethod(
            application.get(), [&] { posted = true; }, Qt::QueuedConnection);

    const unsigned checksum = RunTask(argv[1], task);
    if (task == "appgoes") {
        (void)application.release();
    } else if (kind == "none") {
        Expect(!QCoreApplication::instance(), "no application object is left");
        Expect(!QGuiApplicationPrivate::instance(), "no GUI record is left");
        Expect(!QGuiApplicationPrivate::platformIntegration(), "no platform integration is left");
        if (task != "latergui") {
            for (const int category : {LC_CTYPE, LC_COLLATE, LC_MONETARY, LC_NUMERIC, LC_TIME, LC_MESSAGES, LC_PAPER})
                Expect(std::string(std::setlocale(category, nullptr)) == "C", "the host's locale is kept");
        }
    } else {
        Expect(QCoreApplication::instance() == before, "the host's application object stays");
        CheckEventsArrive();
        Expect(posted, "an event posted before arrives");
    }
    std::printf("checksum %08x\n", checksum);
    return 0;
}
