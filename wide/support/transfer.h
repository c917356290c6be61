// How near the groups of one tree come to those of others: the transfer bootstrap.
#ifndef ZORVEK_WIDE_SUPPORT_TRANSFER_H
#define ZORVEK_WIDE_SUPPORT_TRANSFER_H

#include <vector>

#include "core/index.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

// The transfer distance of a split to a tree [Lemoine2018]: the fewest taxa that must change sides
// for it to become one of the tree's splits, those of single taxa included.
class TransferIndex {
 public:
  // Requires: an unrooted tree that outlives the index.
  explicit TransferIndex(const Tree& reference);

  // For each node of the reference above which an edge is a group, the transfer distance of its split
  // to the unrooted tree `other`, of whose inner edges the groups count; 0 for the other nodes.
  // Cost: n log^3 n at the worst, with the order of updates of [Truszkowski2019].
  std::vector<int> Distances(const Tree& other) const;

  // The greatest distance that is possible above a node: taxa on the smaller side, less one.
  int Farthest(int node) const;

 private:
  int Size(int node) const { return end_[Index(node)] - begin_[Index(node)]; }

  const Tree& reference_;
  std::vector<int> order_;        // the taxa as the reference meets them
  std::vector<int> begin_, end_;  // of the taxa below each node, in that order
};

}  // namespace zorvek::wide

#endif
