// The sanitizer's own operator new ends the process where memory runs out. The programs have
// std::bad_alloc to answer then, so that is what a file gets here that asks for more than a fair
// amount.
#include <cstddef>
#include <new>

void* operator new(std::size_t size) {
  constexpr std::size_t kFair = std::size_t{1} << 30;
  if (size > kFair) throw std::bad_alloc();
  return operator new(size, std::nothrow);
}
