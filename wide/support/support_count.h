// What trees say of the groups of one of them, added up.
#ifndef ZORVEK_WIDE_SUPPORT_SUPPORT_COUNT_H
#define ZORVEK_WIDE_SUPPORT_SUPPORT_COUNT_H

#include <vector>

#include "wide/support/splits.h"
#include "wide/support/transfer.h"
#include "zorvek/support.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

// Adds up what trees say of the groups of one of them, the reference. All are unrooted and have the
// same taxa; an edge that is written as 0 is a group of none of them (Tree::IsGroup).
class SupportCount {
 public:
  // Requires: `reference` outlives the count, and nothing of it but supports changes.
  SupportCount(const Tree& reference, SupportMeasure measure);

  // By how far a tree misses the group above each node of the reference. May be called from several
  // threads.  Cost: as SplitIndex::Shared and TransferIndex::Distances.
  std::vector<int> Misses(const Tree& other) const;

  void Add(const std::vector<int>& misses);

  // Sets the supports of the reference, given once more to be changed: of its groups as was added up,
  // if anything was, and of other edges to none.
  void SetSupports(Tree& reference) const;

 private:
  SupportMeasure measure_;
  SplitIndex splits_;
  TransferIndex transfer_;
  std::vector<long> misses_;  // of each node, sum over the trees
  long trees_ = 0;
};

}  // namespace zorvek::wide

#endif
