// Memory for a large table of numbers, on large pages where the system has them for the asking: whoever
// walks down a column meets another page in every row, and the look-up of small ones takes longer than
// the number does.
#ifndef ZORVEK_CORE_LARGE_TABLE_H
#define ZORVEK_CORE_LARGE_TABLE_H

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace zorvek {

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};

template <typename Number>
using LargeTable = std::unique_ptr<Number[], FreeMemory>;

// So many numbers, not filled.  Throws std::bad_alloc.
template <typename Number>
LargeTable<Number> MakeLargeTable(std::size_t count) {
  constexpr std::size_t kPage = std::size_t{1} << 21;
  const std::size_t bytes = count * sizeof(Number);
  const bool large = bytes >= kPage;
  const std::size_t whole = (bytes + kPage - 1) / kPage * kPage;
  void* memory = large ? std::aligned_alloc(kPage, whole) : std::malloc(bytes);
  if (memory == nullptr && count > 0) throw std::bad_alloc();
#if defined(__linux__)
  if (large) madvise(memory, whole, MADV_HUGEPAGE);  // a hint, which may be refused
#endif
  return LargeTable<Number>(static_cast<Number*>(memory));
}

}  // namespace zorvek

#endif
