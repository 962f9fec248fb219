#include "host/ResidentMemory.h"

#include <cstddef>
#include <cstdint>

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Corvella::ResidentMemory {

namespace {

/// Gives back the segments of a loaded file that nobody writes to. Those that the dynamic linker
/// has written to count as writable in the file's own headers.
int releaseConstantSegments(dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
  const auto page = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
  for (int i = 0; i < object->dlpi_phnum; ++i) {
    const auto& segment = object->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
    const auto start = (object->dlpi_addr + segment.p_vaddr) / page * page;
    const auto end = object->dlpi_addr + segment.p_vaddr + segment.p_memsz;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): addresses are numbers in these headers.
    ::madvise(reinterpret_cast<void*>(start), end - start, MADV_DONTNEED);
  }
  return 0;
}

}  // namespace

void economise() {
  constexpr int kPools = 2;
  constexpr int kLargeBlock = 128 * 1024;
  // NOLINTBEGIN(concurrency-mt-unsafe): there are no other threads yet.
  ::mallopt(M_ARENA_MAX, kPools);
  // Set at all, these no longer grow with the blocks that are freed.
  ::mallopt(M_MMAP_THRESHOLD, kLargeBlock);
  ::mallopt(M_TRIM_THRESHOLD, kLargeBlock);
  // NOLINTEND(concurrency-mt-unsafe)
}

void release() {
  ::malloc_trim(0);
  ::dl_iterate_phdr(releaseConstantSegments, nullptr);
}

}  // namespace Corvella::ResidentMemory
