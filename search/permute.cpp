#include "search/permute.h"

#include "driver/run_state.h"
#include "search/leaf_slots.h"
#include "tree/fast_local_search.h"
#include "tree/tree_follower.h"
#include "tree/tree_length.h"

namespace zorvek {

double Permute(TreeTable tree, double bound) {
  const FollowerScope scope;
  temp1.clear();
  for (const int row : {n - 4, n - 3}) {
    for (const Field side : {kLeft, kRight}) FC(Id(tree[row], side), n + row, tree);
  }
  auto taxon = temp1.cbegin();
  for (double* slot : LeafSlots(tree)) *slot = *taxon++;
  temp1.clear();

  const double length = Evaluate(tree);
  if (length < bound) return length;
  while (FastLocalSearch(tree) && WithinInnerLimit()) {
  }
  return bound;
}

}  // namespace zorvek
