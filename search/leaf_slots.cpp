#include "search/leaf_slots.h"

#include <cstdint>

#include "driver/run_state.h"

namespace zorvek {

double& DrawLeafSlot(TreeTable tree) {
  const auto last_row = static_cast<std::uint32_t>(n - 3);
  while (true) {
    double* row = tree[r->nextAtMost(last_row)];
    double& slot = row[r->nextAtMost(1) == 0 ? kLeft : kRight];
    if (slot < n) return slot;
  }
}

std::vector<double*> LeafSlots(TreeTable tree) {
  std::vector<double*> slots;
  slots.reserve(static_cast<std::size_t>(n));
  for (int row = 0; row < n - 2; ++row) {
    for (const Field side : {kLeft, kRight}) {
      if (tree[row][side] < n) slots.push_back(&tree[row][side]);
    }
  }
  return slots;
}

}  // namespace zorvek
