#pragma once

/**
 * The object that hosts see as an exported variable: the copy in the host's program if the linker made one (a copy
 * relocation), else the library's own.
 *
 * The library is linked with -Bsymbolic, so that its own code never uses a host's variable or class that merely has the
 * same name as one of its own. Only a real copy has the library's symbol version.
 *
 * @param name  the symbol name.
 * @param own   the library's object of that name.
 */
void *HostObject(const char *name, void *own) noexcept;
