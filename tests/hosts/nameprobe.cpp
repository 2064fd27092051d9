// Shows one subtitle with several copies of the library, and writes the frame of each. Fails if any used something of
// ownnames.cpp, which has names of exported symbols.
// usage: nameprobe FILE WIDTH HEIGHT MS LIBRARY...   "linked" is the library that it is linked with
#include "libsubtitle.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string>
#include <vector>

namespace
{

/** The functions of one loaded copy of the library. */
struct Library {
    explicit Library(void *handle)
    {
        Find(pCreate, handle, "CreateVideoSubtitle");
        Find(pDestroy, handle, "DestroyVideoSubtitle");
        Find(pSetFile, handle, "SetSubtitleFile");
        Find(pSetTime, handle, "SetSubtitleTimeStamp");
        Find(pProcess, handle, "ProcessSubtitleFrame");
    }

    template <typename Function>
    static void Find(Function &function, void *handle, const char *name)
    {
        function = reinterpret_cast<Function>(dlsym(handle, name));
        if (!function)
            std::exit(2);
    }

    decltype(&CreateVideoSubtitle) pCreate;
    decltype(&DestroyVideoSubtitle) pDestroy;
    decltype(&SetSubtitleFile) pSetFile;
    decltype(&SetSubtitleTimeStamp) pSetTime;
    decltype(&ProcessSubtitleFrame) pProcess;
};

} // namespace

int main(int argc, char **argv)
{
    if (argc < 6)
        return 1;
    const int width = static_cast<int>(std::strtol(argv[2], nullptr, 10));
    const int height = static_cast<int>(std::strtol(argv[3], nullptr, 10));
    std::vector<Library> libraries;
    std::vector<void *> handles;
    for (int i = 5; i < argc; ++i) {
        void *library = std::strcmp(argv[i], "linked") == 0 ? RTLD_DEFAULT : dlopen(argv[i], RTLD_NOW | RTLD_GLOBAL);
        if (!library && std::strcmp(argv[i], "linked") != 0) {
            (void)std::fprintf(stderr, "%s\n", dlerror());
            return 3;
        }
        libraries.emplace_back(library);
        handles.push_back(libraries.back().pCreate(width, height));
        if (libraries.back().pSetFile(handles.back(), argv[1], 0) != 0)
            return 4;
    }
    for (std::size_t i = 0; i < libraries.size(); ++i) {
        std::vector<uint8_t> pixels(static_cast<std::size_t>(width) * height * 3);
        AVPicture frame = {{pixels.data()}, {3 * width}};
        libraries[i].pSetTime(handles[i], std::strtol(argv[4], nullptr, 10));
        libraries[i].pProcess(handles[i], &frame);
        (void)std::fwrite(pixels.data(), 1, pixels.size(), stdout);
    }
    for (std::size_t i = 0; i < libraries.size(); ++i)
        libraries[i].pDestroy(handles[i]);
    bool (*isUntouched)() = nullptr;
    *reinterpret_cast<void **>(&isUntouched) = dlsym(RTLD_DEFAULT, "OwnNamesAreUntouched");
    return !isUntouched || isUntouched() ? 0 : 5;
}
