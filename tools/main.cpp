#include "commandline/commandline.h"
#include "commandline/console.h"
#include "commandline/failure.h"
#include "commandline/interrupt.h"
#include "commandline/printable.h"
#include "commandline/processlocale.h"
#include "commandline/tracklist.h"
#include "media/ffmpegptr.h"
#include "media/rawpipe.h"
#include "media/snapshot.h"
#include "media/transcoder.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

namespace
{

void List(const Options &options)
{
    const bool bQuiet = true;
    Console console(bQuiet, stderr);
    if (std::fputs(TrackListText(options, console).c_str(), stdout) < 0 || std::fflush(stdout) != 0)
        throw Failure(ExitCode::Output, "standard output", std::generic_category().message(errno));
}

void Run(const Options &options)
{
    if (options.mode == Mode::List) {
        List(options);
        return;
    }
    const SubtitleLibrary library;
    const bool bPictures = options.mode == Mode::Pipe || options.WritesStandardOutput();
    Console console(options.bQuiet, bPictures ? stderr : stdout);
    if (options.mode == Mode::Pipe)
        RawPipe(options, library, console).Run();
    else if (options.mode == Mode::Snapshot)
        Snapshot(options, library, console).Run();
    else
        Transcoder(options, library, console).Run();
}

int Fail(ExitCode code, const char *pReason)
{
    (void)std::fprintf(stderr, "subburn: %s\n", Escaped(pReason).c_str());
    return static_cast<int>(code);
}

} // namespace

int main(int nArguments, char **pArguments)
{
    SetProcessLocale();
    Interrupt::Install();
    av_log_set_level(AV_LOG_QUIET);
    try {
        if (const std::optional<Options> options = CommandLine().Parse(nArguments, pArguments))
            Run(*options);
    } catch (const Failure &failure) {
        return Fail(failure.Code(), failure.what());
    } catch (const std::bad_alloc &) {
        return Fail(ExitCode::Output, "out of memory");
    } catch (const std::exception &error) {
        return Fail(ExitCode::Output, error.what());
    }
    return static_cast<int>(ExitCode::Done);
}
