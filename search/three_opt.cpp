#include "search/three_opt.h"

#include <array>

#include "driver/run_state.h"
#include "search/leaf_slots.h"
#include "tree/tree_follower.h"
#include "tree/tree_length.h"

namespace zorvek {

namespace {

using Triple = std::array<int, 3>;

// The placements other than (0, 1, 2) of three leaves in three slots, in the order they are tried.
constexpr std::array<Triple, 5> kPlacements{
    {{0, 2, 1}, {2, 0, 1}, {2, 1, 0}, {1, 2, 0}, {1, 0, 2}}};

}  // namespace

double THREEoptLocalSearch(TreeTable tree, double bound) {
  const FollowerScope scope;
  double& first = DrawLeafSlot(tree);
  double* second;
  do {
    second = &DrawLeafSlot(tree);
  } while (second == &first);

  for (double* third : LeafSlots(tree)) {
    if (third == &first || third == second) continue;
    const std::array<double, 3> leaves{first, *second, *third};
    const auto place = [&](const Triple& order) {
      first = leaves[static_cast<std::size_t>(order[0])];
      *second = leaves[static_cast<std::size_t>(order[1])];
      *third = leaves[static_cast<std::size_t>(order[2])];
    };
    for (const Triple& placement : kPlacements) {
      place(placement);
      const double length = Evaluate(tree);
      if (length < bound) return length;
    }
    place({0, 1, 2});
  }
  return bound;
}

}  // namespace zorvek
