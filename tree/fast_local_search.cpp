#include "tree/fast_local_search.h"

#include <cassert>
#include <cmath>

#include "driver/run_state.h"
#include "tree/tree_follower.h"

namespace zorvek {

double Delta(int u, int v, TreeTable tree) {
  return InterchangeGain(AroundEdge(u, v, tree));
}

bool FastLocalSearch(TreeTable tree) {
  if (n - 2 < 1) return false;
  TreeFollower& follower = SharedFollower();
  follower.Follow(tree);
  const TreeFollower::Candidate best = follower.Best();
  if (!(best.gain > 0)) return false;
#ifndef NDEBUG
  const double before = follower.RawLength();
#endif
  follower.Interchange(best.child, tree);
  assert(std::fabs(before - follower.RawLength() - best.gain) <= 1e-9 * (1 + std::fabs(before)));
  return true;
}

}  // namespace zorvek
