#include "commandline.h"
#include "console.h"
#include "failure.h"
#include "ffmpegptr.h"
#include "interrupt.h"
#include "processlocale.h"
#include "rawpipe.h"
#include "snapshot.h"
#include "transcoder.h"

#include <cstdio>

namespace
{

void Run(const Options &options)
{
    const SubtitleLibrary library;
    Console console(options.bQuiet, options.mode == Mode::Pipe ? stderr : stdout);
    if (options.mode == Mode::Pipe)
        RawPipe(options, library, console).Run();
    else if (options.mode == Mode::Snapshot)
        Snapshot(options, library, console).Run();
    else
        Transcoder(options, library, console).Run();
}

int Fail(ExitCode code, const char *pReason)
{
    std::fprintf(stderr, "subburn: %s\n", pReason);
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
