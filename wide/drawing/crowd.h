// Which places of a picture are taken.
#ifndef ZORVEK_WIDE_DRAWING_CROWD_H
#define ZORVEK_WIDE_DRAWING_CROWD_H

#include <cstddef>
#include <cstdint>
#include <unordered_map>
#include <vector>

#include "wide/drawing/layout.h"

namespace zorvek::wide {

// A straight line with a thickness: an edge, or the middle of a text with half its height.
struct Bar {
  Point a;
  Point b;
  double half = 0;  // of the thickness
};

// Bars, found by the squares of a grid that they cross.
class Crowd {
 public:
  explicit Crowd(const std::vector<Bar>& bars);

  // Whether the bar, a text's, covers none that is there. If so, it is there too.
  bool Place(const Bar& bar);

 private:
  // Calls visit(square) for the squares of the grid that come near the bar, some of them twice.
  template <typename Visit>
  void Near(const Bar& bar, Visit visit) const;
  void Add(const Bar& bar);

  double square_;  // its side
  std::vector<Bar> bars_;
  std::unordered_map<std::uint64_t, std::vector<std::size_t>> near_;
};

}  // namespace zorvek::wide

#endif
