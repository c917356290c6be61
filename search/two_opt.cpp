#include "search/two_opt.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

#include "driver/run_state.h"
#include "search/leaf_slots.h"
#include "tree/tree_follower.h"
#include "tree/tree_length.h"

namespace zorvek {

double TWOoptLocalSearch(TreeTable tree, double bound) {
  const FollowerScope scope;
  double& slot = DrawLeafSlot(tree);
  const int leaf = static_cast<int>(slot);
  std::vector<double*> slot_of(static_cast<std::size_t>(n));
  for (double* leaf_slot : LeafSlots(tree))
    slot_of[static_cast<std::size_t>(*leaf_slot)] = leaf_slot;
  const int tried = std::clamp(horizon, 0, n - 1);
  for (int k = 0; k < tried; ++k) {
    double& other = *slot_of[static_cast<std::size_t>(CL[leaf][k])];
    std::swap(slot, other);
    const double length = Evaluate(tree);
    if (length < bound) return length;
    std::swap(slot, other);
  }
  return bound;
}

}  // namespace zorvek
