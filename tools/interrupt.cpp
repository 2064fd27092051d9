#include "interrupt.h"

#include "failure.h"
#include "ffmpegptr.h"

#include <csignal>

namespace
{

volatile std::sig_atomic_t g_bRequested = 0;

void Request(int /*nSignal*/)
{
    g_bRequested = 1;
}

} // namespace

void Interrupt::Install()
{
    struct sigaction action = {};
    sigemptyset(&action.sa_mask);
    action.sa_handler = Request;
    for (int nSignal : {SIGINT, SIGTERM, SIGHUP})
        sigaction(nSignal, &action, nullptr);
    // A closed pipe or a file past its size limit shall be a write error like any other.
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
