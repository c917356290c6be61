// Edge lengths, tree length and best interchange of whatever tree table it is shown, kept by
// difference.
//
// It remembers the children of every row as last seen. Shown a table, it compares: one interchange
// is followed in O(n), anything else by remaking the nodes above the changed rows. Since all sums
// are exact, what it says depends on the distances and the table alone, not on the way there.
#ifndef ZORVEK_TREE_TREE_FOLLOWER_H
#define ZORVEK_TREE_TREE_FOLLOWER_H

#include <array>
#include <vector>

#include "core/ordered_sum.h"
#include "core/subtree_sums.h"
#include "core/tournament.h"
#include "tree/tree_table.h"

namespace zorvek {

// One instance serves one thread.
class TreeFollower {
 public:
  // See SubtreeSums for what it requires, its memory and its cost.
  TreeFollower(int n, const double* const* distances);

  // Takes the tree of the table's `left` and `right` fields.
  // Requires: a well-formed table.  Cost: n for the comparison and after one interchange; otherwise
  // n for each node at or above a changed row.
  void Follow(TreeTable tree);

  // Sum of the positive edge lengths, row by row, left before right, the central edge last.
  double Length();

  // Writes all edge lengths into the table.  Cost: n.
  void WriteLengths(TreeTable tree) const;

  // The interchange of largest gain over all internal edges but the central one, the earlier row
  // and left before right where gains are equal.  Requires: n >= 5.  Cost: constant.
  struct Candidate {
    int child;    // lower end of the edge, whose left child trades places with its sibling
    double gain;  // decrease of the raw least-squares length
  };
  Candidate Best() const;

  // Whether the best interchange shortens the raw least-squares length.  Cost: constant.
  bool CanImprove() const { return gains_.Value(gains_.Winner()) > 0; }

  // Makes the best interchange, here and in the table, if it shortens the raw least-squares length.
  // Returns whether it did.  Requires: the table is the one last followed.  Cost: n.
  bool Improve(TreeTable tree);

  // Sum of all edge lengths, the negative ones included.  Cost: n.
  double RawLength() const;

  const SubtreeSums& Sums() const { return sums_; }

 private:
  bool FollowInterchange();
  void Interchange(int child, TreeTable tree);
  int Slot(int node) const;  // place of the edge above a node: 2 row + side
  void RefreshEdges();

  SubtreeSums sums_;
  std::vector<std::array<double, 2>> children_;  // per node row: `left` and `right` as last seen
  std::vector<int> changed_;                     // rows found different
  std::vector<double> lengths_;                  // per slot
  double central_length_ = 0;
  OrderedSum positive_;  // per slot: the length, or 0 for a negative one
  Tournament gains_;     // per slot: the gain, absent for an edge to a leaf
};

// A stretch of time in which n and DM1 stay as they are, so that one follower serves all of it. Each
// of the run's functions holds a scope: called by itself, it makes a follower for this one call, for
// n^2, and so answers for DM1 as it stands; within the scope of a search it goes on with that one's.
class FollowerScope {
 public:
  FollowerScope();
  ~FollowerScope();
  FollowerScope(const FollowerScope&) = delete;
  FollowerScope& operator=(const FollowerScope&) = delete;

  // The follower of the outermost scope, shown the table. It is made of n and DM1 when it is first
  // asked for. Empties temp1: no list of leaves outlives an evaluation.
  // Requires and cost: see TreeFollower.
  TreeFollower& Follow(TreeTable tree) const;
};

// The subtrees around the edge between the adjacent internal nodes u and v of the table. Lengths and
// gains do not depend on which end is named first.
Quartet AroundEdge(int u, int v, TreeTable tree);

}  // namespace zorvek

#endif
