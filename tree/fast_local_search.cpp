#include "tree/fast_local_search.h"

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
  return follower.Improve(tree);
}

}  // namespace zorvek
