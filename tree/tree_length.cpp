#include "tree/tree_length.h"

#include "tree/tree_follower.h"

namespace zorvek {

double Evaluate(TreeTable tree) {
  const FollowerScope scope;
  TreeFollower& follower = scope.Follow(tree);
  follower.WriteLengths(tree);
  return follower.Length();
}

double ComputeExternalLength(int leaf, int, TreeTable tree) {
  const FollowerScope scope;
  return scope.Follow(tree).Sums().ExternalLength(leaf);
}

double ComputeInternalLength(int u, int v, TreeTable tree) {
  return InternalLength(AroundEdge(u, v, tree));
}

}  // namespace zorvek
