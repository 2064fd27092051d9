#include "support/faultymemory.h"

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <link.h>
#include <malloc.h>
#include <new>

// glibc's own functions, by names that are not replaced here.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *block, size_t size);
void *__libc_memalign(size_t alignment, size_t size);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace
{

struct {
    bool isOn = false;
    faultymemory::Selection selection;
    std::uintptr_t code = 0; // the segment whose allocations count; 0 for any
    std::uintptr_t codeEnd = 0;
    long faultyAllocation = -1;
    long allocations = 0;
} state;

/** Callback of dl_iterate_phdr(): looks for the segment that has an address. */
int FindCode(dl_phdr_info *library, size_t /*size*/, void *address)
{
    const auto wanted = reinterpret_cast<std::uintptr_t>(address);
    for (int i = 0; i < library->dlpi_phnum; ++i) {
        const std::uintptr_t begin = library->dlpi_addr + library->dlpi_phdr[i].p_vaddr;
        const std::uintptr_t end = begin + library->dlpi_phdr[i].p_memsz;
        if (library->dlpi_phdr[i].p_type == PT_LOAD && wanted >= begin && wanted < end) {
            state.code = begin;
            state.codeEnd = end;
            return 1;
        }
    }
    return 0;
}

bool Fails(size_t size, const void *caller)
{
    if (!state.isOn || size < state.selection.nLeast)
        return false;
    const auto from = reinterpret_cast<std::uintptr_t>(caller);
    if (state.codeEnd != 0 && (from < state.code || from >= state.codeEnd))
        return false;
    const long allocation = state.allocations++;
    if (state.faultyAllocation < 0)
        return false;
    return state.selection.bLasting ? allocation >= state.faultyAllocation : allocation == state.faultyAllocation;
}

void *Allocate(size_t size, const void *caller)
{
    void *block = Fails(size, caller) ? nullptr : __libc_malloc(size != 0 ? size : 1);
    if (!block)
        throw std::bad_alloc();
    return block;
}

} // namespace

namespace faultymemory
{

void Choose(const Selection &selection, long nAllocation)
{
    state.isOn = false;
    state.selection = selection;
    state.code = state.codeEnd = 0;
    if (selection.pCode)
        dl_iterate_phdr(FindCode, const_cast<void *>(selection.pCode));
    state.faultyAllocation = nAllocation;
    state.allocations = 0;
}

void Go()
{
    state.isOn = true;
}

void Pause()
{
    state.isOn = false;
}

long Count()
{
    return state.allocations;
}

} // namespace faultymemory

void *operator new(size_t size)
{
    return Allocate(size, __builtin_return_address(0));
}

void *operator new[](size_t size)
{
    return Allocate(size, __builtin_return_address(0));
}

void operator delete(void *block) noexcept
{
    free(block);
}

void operator delete[](void *block) noexcept
{
    free(block);
}

void operator delete(void *block, size_t /*size*/) noexcept
{
    free(block);
}

void operator delete[](void *block, size_t /*size*/) noexcept
{
    free(block);
}

extern "C" {

void *malloc(size_t size)
{
    if (Fails(size, __builtin_return_address(0))) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_malloc(size);
}

void *calloc(size_t count, size_t size)
{
    if (Fails(count * size, __builtin_return_address(0))) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_calloc(count, size);
}

void *realloc(void *block, size_t size)
{
    if (Fails(size, __builtin_return_address(0))) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_realloc(block, size);
}

void *memalign(size_t alignment, size_t size)
{
    if (Fails(size, __builtin_return_address(0))) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_memalign(alignment, size);
}

void *aligned_alloc(size_t alignment, size_t size)
{
    if (Fails(size, __builtin_return_address(0))) {
        errno = ENOMEM;
        return nullptr;
    }
    return __libc_memalign(alignment, size);
}

int posix_memalign(void **block, size_t alignment, size_t size)
{
    if (Fails(size, __builtin_return_address(0)))
        return ENOMEM;
    *block = __libc_memalign(alignment, size);
    return *block ? 0 : ENOMEM;
}
}
