#include "vobsub/hostsymbol.h"

#include <dlfcn.h>
#include <link.h>

namespace
{

/** The version of every exported symbol, as api/libsubtitle.map names it. */
constexpr const char *SymbolVersion = "LIBSUBTITLE_1";

/** Copy relocations exist only in the program; a symbol of a preloaded library must not be used. */
bool IsInProgram(const void *address)
{
    Dl_info info;
    link_map *object = nullptr;
    return dladdr1(address, &info, reinterpret_cast<void **>(&object), RTLD_DL_LINKMAP) != 0 && object &&
           !object->l_prev;
}

} // namespace

void *HostObject(const char *name, void *own) noexcept
{
    // RTLD_DEFAULT would find the library's own first, since it is linked with -Bsymbolic.
    void *program = dlopen(nullptr, RTLD_LAZY);
    void *found = program ? dlvsym(program, name, SymbolVersion) : nullptr;
    return found && IsInProgram(found) ? found : own;
}
