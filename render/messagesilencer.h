#pragma once

/**
 * Keeps Qt from writing warnings while it lives, as far as they come from its thread; what other threads say passes. Qt
 * warns of what is as it should be here: application objects and font caches on threads that Qt did not make, fonts
 * without the tables of some script.
 */
class MessageSilencer
{
public:
    MessageSilencer();
    ~MessageSilencer();
    MessageSilencer(const MessageSilencer &) = delete;
    MessageSilencer &operator=(const MessageSilencer &) = delete;
};
