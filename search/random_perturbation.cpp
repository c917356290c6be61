#include "search/random_perturbation.h"

#include <cstdint>

#include "driver/run_state.h"

namespace zorvek {

namespace {

// Whether the child of an inner row is internal. Central nodes are nobody's child, and their rows
// are the last two node rows.
bool IsEligible(TreeTable tree, int row, Field side) {
  return row < n - 4 && tree[row][side] >= n;
}

bool HasEligibleEdge(TreeTable tree) {
  for (int row = 0; row < n - 2; ++row) {
    if (IsEligible(tree, row, kLeft) || IsEligible(tree, row, kRight)) return true;
  }
  return false;
}

}  // namespace

int RandomPerturbation(TreeTable tree) {
  if (!HasEligibleEdge(tree)) return 1;
  int row;
  Field side;
  do {
    row = static_cast<int>(r->nextAtMost(static_cast<std::uint32_t>(n - 3)));
    side = r->nextAtMost(1) == 0 ? kLeft : kRight;
  } while (!IsEligible(tree, row, side));
  Interchange(tree, n + row, Id(tree[row], side));
  return 1;
}

}  // namespace zorvek
