#pragma once

struct AVIOInterruptCB;

/** Turns Ctrl-C and every other signal that asks a process to end into a flag that the loops look at. */
class Interrupt
{
public:
    static void Install();
    static bool Requested();

    /** Throws a Failure once a stop was requested. */
    static void Check();

    /** Lets FFmpeg's blocking reads and writes look at the flag too. */
    static AVIOInterruptCB Callback();
};
