#include "search/shift.h"

#include <cstddef>
#include <vector>

#include "driver/run_state.h"
#include "tree/tree_follower.h"

namespace zorvek {

namespace {

std::vector<char> dealt;  // per taxon: whether its slot is dealt anew

// Collects into temp1 the leaves of the subtree that two fair bits pick.
void DrawSubtree(TreeTable tree) {
  const Field side = r->nextAtMost(1) == 0 ? kLeft : kRight;
  const double* central = tree[n - 4 + static_cast<int>(r->nextAtMost(1))];
  FC(Id(central, side), Id(central, kSelf), tree);
}

// Gives the slots of temp1's leaves, in row order, those leaves in temp1's order rotated left by
// one.
void Redeal(TreeTable tree) {
  dealt.assign(static_cast<std::size_t>(n), false);
  for (const int leaf : temp1) dealt[static_cast<std::size_t>(leaf)] = true;
  std::size_t next = 0;
  for (int row = 0; row < n - 2; ++row) {
    for (const Field side : {kLeft, kRight}) {
      const int child = Id(tree[row], side);
      if (child >= n || !dealt[static_cast<std::size_t>(child)]) continue;
      next = (next + 1) % temp1.size();
      tree[row][side] = temp1[next];
    }
  }
}

}  // namespace

// Within the passes nobody but the follower changes the tree, so Evaluate's and FastLocalSearch's
// look over the table is left out, and the lengths are written once, as the last evaluation found
// them.
double Shift(TreeTable tree, double bound) {
  DrawSubtree(tree);
  Redeal(tree);
  const std::size_t passes = temp1.size();
  const FollowerScope scope;
  TreeFollower& follower = scope.Follow(tree);  // empties temp1
  for (std::size_t pass = 1;; ++pass) {
    const double length = follower.Length();
    const bool last = length < bound || pass == passes || !follower.CanImprove();
    if (last) follower.WriteLengths(tree);
    if (length < bound) return length;
    while (follower.Improve(tree) && WithinInnerLimit()) {
    }
    if (last) return bound;
  }
}

}  // namespace zorvek
