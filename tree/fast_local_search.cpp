#include "tree/fast_local_search.h"

#include "driver/run_state.h"
#include "tree/tree_follower.h"

namespace zorvek {

double Delta(int u, int v, TreeTable tree) {
  return InterchangeGain(AroundEdge(u, v, tree));
}

bool FastLocalSearch(TreeTable tree) {
  if (n < 5) return false;  // the central edge, the only one, is no candidate
  const FollowerScope scope;
  return scope.Follow(tree).Improve(tree);
}

}  // namespace zorvek
