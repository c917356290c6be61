// Taxa that cannot be told apart, kept together.
//
// The sum of the positive edge lengths need not be least with them side by side: where distances
// are far from a tree's, an edge that is negative there, and counts nothing, can pay for setting
// them apart.
#ifndef ZORVEK_WIDE_IDENTICAL_H
#define ZORVEK_WIDE_IDENTICAL_H

#include <vector>

#include "wide/distance_matrix.h"
#include "wide/tree.h"
#include "wide/tree_view.h"

namespace zorvek::wide {

using Groups = std::vector<std::vector<int>>;

// The groups, of two taxa at least, at distance 0 and with the same distances to all others.
// Cost: n^2, and n for each pair at distance 0.
Groups IdenticalTaxa(const DistanceMatrix& distances);

// Moves the taxa of each group that stand apart to one of them, to the one where the tree becomes
// shortest, and takes the lengths anew.  Cost: n^2 for each taxon that such a group has.
void KeepTogether(const Groups& groups, const DistanceMatrix& distances, Tree& tree);

// Makes the edges within each group 0, which they are but for rounding.
void ClearWithin(const Groups& groups, TreeView& view);

}  // namespace zorvek::wide

#endif
