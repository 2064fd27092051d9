#pragma once

struct AVIOInterruptCB;

/** Makes Ctrl-C and the other signals that end a process set a flag, which the loops check. */
class Interrupt
{
public:
    static void Install();
    static bool Requested();

    /** Throws a Failure once a stop was requested. */
    static void Check();

    /** For FFmpeg: stops blocking reads and writes once the flag is set. */
    static AVIOInterruptCB Callback();
};
