#pragma once

/**
 * Suppresses the Qt messages of its thread while it lives; those of other threads pass. Qt warns about things that are
 * normal here: application objects and font caches on threads that Qt did not create, fonts without the tables of some
 * script.
 */
class MessageSilencer
{
public:
    MessageSilencer();
    ~MessageSilencer();
    MessageSilencer(const MessageSilencer &) = delete;
    MessageSilencer &operator=(const MessageSilencer &) = delete;
};
