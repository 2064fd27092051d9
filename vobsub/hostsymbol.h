#pragma once

/**
 * The object that hosts see under a name of an exported variable: the copy in the host's program where the linker made
 * one (a copy relocation), else the library's own.
 *
 * The library is linked with -Bsymbolic, so that its own code never uses a host's variable or class that merely has the
 * same name as one of its own. A real copy differs from those in its symbol version.
 *
 * @param name  as the linker knows it.
 * @param own   the library's object of that name.
 */
void *HostObject(const char *name, void *own) noexcept;
