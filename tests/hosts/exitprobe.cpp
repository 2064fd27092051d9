// A host that exits with handles alive, in use or being destroyed. Linked with the library. Prints "destroyed" for each
// handle that it destroys during exit.
// usage: exitprobe MODE KIND FILE   KIND: none, or core for a QCoreApplication that is never destroyed
#include "libsubtitle.h"

#include <QCoreApplication>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <map>
#include <string>
#include <thread>
#include <vector>

namespace
{

constexpr int Width = 320;
constexpr int Height = 180;

std::string file;
void *handle;
std::promise<void> lateEnd;
std::thread lateThread;

void *Open()
{
    void *subtitle = CreateVideoSubtitle(Width, Height);
    SetSubtitleFile(subtitle, file.c_str(), 0);
    return subtitle;
}

int Frame(void *subtitle, long ms)
{
    std::vector<uint8_t> pixels(static_cast<std::size_t>(Width) * Height * 3);
    AVPicture frame = {{pixels.data()}, {3 * Width}};
    SetSubtitleTimeStamp(subtitle, ms);
    return ProcessSubtitleFrame(subtitle, &frame);
}

void *OpenAndShow()
{
    void *subtitle = Open();
    Frame(subtitle, 1500);
    return subtitle;
}

void Destroy()
{
    DestroyVideoSubtitle(handle);
    std::puts("destroyed");
}

void DestroyOnThread()
{
    std::thread(Destroy).join();
}

/** Calls what a late thread of a host may call. After the end of main() everything except destruction is refused. */
void UseAndDestroy()
{
    if (Frame(handle, 3500) != -1 || SetSubtitleFile(handle, file.c_str(), 0) != -1 ||
        SetSubtitleFontParam(handle, "DejaVu Serif", 20, 0) != -1 || CreateVideoSubtitle(Width, Height))
        std::puts("not refused");
    AVPicture out = {};
    int rect[4];
    if (TextToBmp(handle, "text", &out, rect) != -1)
        std::puts("not refused");
    Destroy();
}

/** Destroyed after everything that was made since main() began. */
struct Last {
    ~Last()
    {
        if (pTask)
            pTask();
    }
    void (*pTask)() = nullptr;
} last;

[[noreturn]] void ShowForEver()
{
    for (long n = 0;; ++n)
        Frame(handle, n % 2 ? 1500 : 3500);
}

[[noreturn]] void SetFontForEver()
{
    for (int n = 0;; ++n)
        SetSubtitleFontParam(handle, "DejaVu Sans", 10 + n % 5, 0);
}

[[noreturn]] void CreateForEver()
{
    for (;;) {
        void *subtitle = OpenAndShow();
        if (subtitle)
            DestroyVideoSubtitle(subtitle);
    }
}

/** Shows a frame on threads that end at once. */
[[noreturn]] void EndThreadsForEver()
{
    for (long n = 0;; ++n)
        std::thread(Frame, handle, n % 2 ? 1500 : 3500).join();
}

/** Shows a frame on a thread that lives until EndLateThread(). */
void StartLateThread()
{
    std::promise<void> shown;
    lateThread = std::thread([&shown] {
        Frame(handle, 1500);
        shown.set_value();
        lateEnd.get_future().wait();
    });
    shown.get_future().wait();
}

void EndLateThread()
{
    lateEnd.set_value();
    lateThread.join();
}

void RunBeside(void (*task)())
{
    std::thread(task).detach();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

const std::map<std::string, void (*)()> Modes = {
    {"left", [] { handle = OpenAndShow(); }},
    {"left by a thread", [] { std::thread([] { handle = OpenAndShow(); }).join(); }},
    {"static object",
     [] {
         last.pTask = Destroy;
         handle = OpenAndShow();
     }},
    {"static object that goes on",
     [] {
         last.pTask = UseAndDestroy;
         handle = Open();
     }},
    {"thread of a static object",
     [] {
         last.pTask = DestroyOnThread;
         handle = OpenAndShow();
     }},
    {"registered before",
     [] {
         (void)std::atexit(Destroy);
         handle = OpenAndShow();
     }},
    {"thread registered before",
     [] {
         (void)std::atexit(DestroyOnThread);
         handle = OpenAndShow();
     }},
    {"registered after the handle was made",
     [] {
         handle = CreateVideoSubtitle(Width, Height);
         (void)std::atexit(Destroy);
         SetSubtitleFile(handle, file.c_str(), 0);
         Frame(handle, 3500);
     }},
    {"registered last",
     [] {
         handle = OpenAndShow();
         (void)std::atexit(Destroy);
     }},
    {"object of the thread",
     [] {
         static thread_local Last ofThread;
         ofThread.pTask = Destroy;
         handle = OpenAndShow();
     }},
    {"thread that a static object ends",
     [] {
         last.pTask = EndLateThread;
         handle = Open();
         StartLateThread();
     }},
    {"while threads end",
     [] {
         handle = Open();
         RunBeside(EndThreadsForEver);
     }},
    {"while frames are shown",
     [] {
         handle = Open();
         RunBeside(ShowForEver);
     }},
    {"while fonts are set",
     [] {
         handle = Open();
         RunBeside(SetFontForEver);
     }},
    {"while handles are made", [] { RunBeside(CreateForEver); }},
    {"by a thread, after many handles",
     [] {
         for (int n = 0; n < 40; ++n)
             DestroyVideoSubtitle(CreateVideoSubtitle(Width, Height));
         for (int n = 0; n < 40; ++n) {
             handle = CreateVideoSubtitle(Width, Height);
             SetSubtitleFile(handle, "no such file.srt", 0);
             DestroyVideoSubtitle(handle);
         }
         handle = CreateVideoSubtitle(Width, Height);
         (void)std::atexit([] {
             Frame(handle, 3500);
             Destroy();
         });
         SetSubtitleFile(handle, file.c_str(), 0);
         Frame(handle, 1500);
         std::thread([] { std::exit(0); }).join();
     }},
    {"by a thread while frames are shown",
     [] {
         handle = Open();
         RunBeside([] { std::exit(0); });
         ShowForEver();
     }},
};

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4 || Modes.count(argv[1]) == 0)
        return 1;
    static char name[] = "host";
    static char *arguments[] = {name, nullptr};
    static int argumentCount = 1;
    static QCoreApplication *application =
        std::string(argv[2]) == "core" ? new QCoreApplication(argumentCount, arguments) : nullptr;
    (void)application;
    file = argv[3];
    Modes.at(argv[1])();
    return 0;
}
