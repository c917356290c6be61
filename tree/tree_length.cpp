#include "tree/tree_length.h"

#include "driver/run_state.h"
#include "tree/tree_follower.h"

namespace zorvek {

double Evaluate(TreeTable tree) {
  TreeFollower& follower = SharedFollower();
  follower.Follow(tree);
  follower.WriteLengths(tree);
  return follower.Length();
}

double ComputeExternalLength(int leaf, int, TreeTable tree) {
  TreeFollower& follower = SharedFollower();
  follower.Follow(tree);
  return follower.Sums().ExternalLength(leaf);
}

double ComputeInternalLength(int u, int v, TreeTable tree) {
  return InternalLength(AroundEdge(u, v, tree));
}

}  // namespace zorvek
