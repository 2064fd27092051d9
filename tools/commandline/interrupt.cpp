#include "commandline/interrupt.h"

#include "commandline/failure.h"
#include "media/ffmpegptr.h"

#include <array>
#include <csignal>

namespace
{

// All signals that end a process by default, except SIGPIPE and SIGXFSZ (see Install()) and those that report a fault.
const std::array<int, 13> StopSignals = {SIGHUP,  SIGINT,  SIGQUIT, SIGTERM, SIGALRM, SIGVTALRM, SIGPROF,
                                         SIGUSR1, SIGUSR2, SIGXCPU, SIGIO,   SIGPWR,  SIGSTKFLT};

volatile std::sig_atomic_t g_bRequested = 0;

void Request(int /*nSignal*/)
{
    g_bRequested = 1;
}

/** Installs the handler unless the signal is ignored already, as by nohup, or handled, as by a profiler. */
void StopOn(int nSignal)
{
    struct sigaction action = {};
    if (sigaction(nSignal, nullptr, &action) != 0 || action.sa_handler != SIG_DFL)
        return;
    action = {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = Request;
    sigaction(nSignal, &action, nullptr);
}

} // namespace

void Interrupt::Install()
{
    for (int nSignal : StopSignals)
        StopOn(nSignal);
    for (int nSignal = SIGRTMIN; nSignal <= SIGRTMAX; ++nSignal)
        StopOn(nSignal);
    // Make a closed pipe or an exceeded file size limit an ordinary write error.
    struct sigaction action = {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = SIG_IGN;
    for (int nSignal : {SIGPIPE, SIGXFSZ})
        sigaction(nSignal, &action, nullptr);
}

bool Interrupt::Requested()
{
    return g_bRequested != 0;
}

void Interrupt::Check()
{
    if (Requested())
        throw Failure(ExitCode::Stopped, "stopped");
}

AVIOInterruptCB Interrupt::Callback()
{
    AVIOInterruptCB callback = {};
    callback.callback = [](void *) { return Requested() ? 1 : 0; };
    return callback;
}
