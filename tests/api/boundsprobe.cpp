// A host with limited memory: opens a file, shows frames and prints whether a subtitle was visible. For bounds_test.
// usage: boundsprobe MEBIBYTES FILE [MILLISECONDS]...
// A negative number sets no limit; the probe then prints at the end whether that much memory was enough. This is for
// FFmpeg, which carries on when an allocation fails, so that a limit would go unnoticed.
#include "libsubtitle.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace
{

constexpr int Width = 320;
constexpr int Height = 180;
constexpr unsigned MaxSeconds = 60; ///< then SIGALRM ends a host that hangs; without load all take a second or two

/** Limits the address space to what the process has now and this much more. */
bool LimitMemory(rlim_t nMebibytes)
{
    long nPages = 0;
    std::FILE *pFile = std::fopen("/proc/self/statm", "r");
    const bool bRead = pFile && std::fscanf(pFile, "%ld", &nPages) == 1; // NOLINT(cert-err34-c)
    if (pFile)
        (void)std::fclose(pFile);
    const rlim_t nBytes = static_cast<rlim_t>(nPages) * static_cast<rlim_t>(sysconf(_SC_PAGESIZE)) + (nMebibytes << 20);
    const rlimit limit = {nBytes, nBytes};
    return bRead && setrlimit(RLIMIT_AS, &limit) == 0;
}

/** Peak resident memory of the process. */
long PeakMebibytes()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss >> 10;
}

} // namespace

int main(int argc, char **argv)
{
    if (argc < 3)
        return 2;
    alarm(MaxSeconds);
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(Width) * Height * 3, 90);
    AVPicture frame = {{pixels.data()}, {Width * 3}};
    int box[4];
    AVPicture bitmap = {};
    void *pHandle = CreateVideoSubtitle(Width, Height);
    TextToBmp(pHandle, "Fonts are loaded once", &bitmap, box);
    const long nMebibytes = std::strtol(argv[1], nullptr, 10);
    if (nMebibytes >= 0 && !LimitMemory(static_cast<rlim_t>(nMebibytes)))
        return 2;
    const long nBefore = PeakMebibytes();

    std::printf("opened: %d\n", SetSubtitleFile(pHandle, argv[2], 0));
    for (int n = 3; n < argc; ++n) {
        std::fill(pixels.begin(), pixels.end(), std::uint8_t{90});
        SetSubtitleTimeStamp(pHandle, std::strtol(argv[n], nullptr, 10));
        ProcessSubtitleFrame(pHandle, &frame);
        const bool bShown = std::any_of(pixels.begin(), pixels.end(), [](std::uint8_t byte) { return byte != 90; });
        std::printf("%s: %s\n", argv[n], bShown ? "shown" : "nothing");
    }
    DestroyVideoSubtitle(pHandle);
    if (nMebibytes < 0)
        std::printf("memory: %s\n", PeakMebibytes() - nBefore <= -nMebibytes ? "enough" : "not enough");
    return 0;
}
