// Node and taxon numbers are int, for differences and -1; containers count in std::size_t.
#ifndef ZORVEK_CORE_INDEX_H
#define ZORVEK_CORE_INDEX_H

#include <cstddef>

namespace zorvek {

// Requires: number >= 0.
constexpr std::size_t Index(int number) {
  return static_cast<std::size_t>(number);
}

}  // namespace zorvek

#endif
