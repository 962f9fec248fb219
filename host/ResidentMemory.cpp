#include "host/ResidentMemory.h"

#include <cstddef>
#include <cstdint>

#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

namespace Corvella::ResidentMemory {

namespace {

/// Whether the dynamic linker writes to the code of a loaded file, as it has to for code that is
/// not independent of its place.
bool hasTextRelocations(const dl_phdr_info& object) {
  for (int i = 0; i < object.dlpi_phnum; ++i) {
    const auto& segment = object.dlpi_phdr[i];
    if (segment.p_type != PT_DYNAMIC) continue;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): addresses are numbers in these headers.
    const auto* entry = reinterpret_cast<const ElfW(Dyn)*>(object.dlpi_addr + segment.p_vaddr);
    for (; entry->d_tag != DT_NULL; ++entry) {
      if (entry->d_tag == DT_TEXTREL) return true;
      if (entry->d_tag == DT_FLAGS && (entry->d_un.d_val & DF_TEXTREL) != 0) return true;
    }
  }
  return false;
}

/// Gives back the segments of a loaded file that nobody writes to. What the dynamic linker writes
/// to when it loads a file is, else, in segments that are writable by the file's own headers.
int releaseConstantSegments(dl_phdr_info* object, std::size_t /*size*/, void* /*data*/) {
  if (hasTextRelocations(*object)) return 0;
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

void release() {
  // Large blocks go back to the kernel as they are freed. Set at all, these no longer grow with the
  // blocks that are freed.
  constexpr int kLargeBlock = 128 * 1024;
  // NOLINTBEGIN(concurrency-mt-unsafe): what is set changes nothing about blocks that are in use.
  ::mallopt(M_MMAP_THRESHOLD, kLargeBlock);
  ::mallopt(M_TRIM_THRESHOLD, kLargeBlock);
  // NOLINTEND(concurrency-mt-unsafe)
  ::malloc_trim(0);
  ::dl_iterate_phdr(releaseConstantSegments, nullptr);
}

}  // namespace Corvella::ResidentMemory
