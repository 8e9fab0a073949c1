#include "platform/memory.h"

#include <cstdint>
#include <sys/mman.h>
#include <unistd.h>

void MEMORY_PreferLargePages(void* block, size_t bytes) {
    const auto page = static_cast<uintptr_t>(::sysconf(_SC_PAGESIZE));
    const auto begin = reinterpret_cast<uintptr_t>(block);
    const uintptr_t skipped = (page - begin % page) % page; // only whole pages can be advised on
    if (bytes > skipped) {
        ::madvise(static_cast<char*>(block) + skipped, (bytes - skipped) / page * page,
                  MADV_HUGEPAGE);
    }
}
