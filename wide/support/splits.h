// How often the groups of one tree occur in others.
#ifndef ZORVEK_WIDE_SUPPORT_SPLITS_H
#define ZORVEK_WIDE_SUPPORT_SPLITS_H

#include <map>
#include <utility>
#include <vector>

#include "zorvek/tree.h"

namespace zorvek::wide {

// Splits by [Day1985]: number the taxa in the order in which the reference tree meets them; its
// splits are then runs of numbers without a gap, told by their ends, and so is a split of another
// tree if and only if it is one of the reference's. Only edges that are groups (Tree::IsGroup) count,
// on both sides. All trees are unrooted.
class SplitIndex {
 public:
  explicit SplitIndex(const Tree& reference);

  // The nodes of the reference above which an edge splits the taxa as one of `other` does. `other`
  // has the same taxa.  Cost: n log n.
  std::vector<int> Shared(const Tree& other) const;

 private:
  struct Run {
    int first;
    int last;
    int size;
  };
  std::vector<Run> Runs(const Tree& tree) const;

  std::vector<int> rank_;                      // of each taxon
  std::map<std::pair<int, int>, int> splits_;  // node of each run
};

}  // namespace zorvek::wide

#endif
