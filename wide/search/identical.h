// Taxa that cannot be told apart, kept together.
//
// A criterion need not be least with them side by side: where distances are far from a tree's, an edge
// that is negative there, and counts nothing in a sum of positive ones, can pay for setting them apart.
#ifndef ZORVEK_WIDE_SEARCH_IDENTICAL_H
#define ZORVEK_WIDE_SEARCH_IDENTICAL_H

#include <vector>

#include "wide/criterion/neighbourhood.h"
#include "wide/data/topology.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

using Groups = std::vector<std::vector<int>>;

// The groups, of two taxa at least, at distance 0 and with the same distances to all others.
// Cost: n^2, and n for each pair at distance 0.
Groups IdenticalTaxa(int n, const double* const* distances);

// The first taxon of each group, and those that are in none, in their order.
std::vector<int> DistinctTaxa(int n, const Groups& groups);

// A tree of some of the taxa, which get the numbers of their places in `kept`.
// Requires: at least 4 of them.  Cost: n.
Topology WithoutOthers(const std::vector<int>& kept, Topology tree);

// Of n taxa again, those of each group side by side.
Topology WithGroups(const Groups& groups, const std::vector<int>& kept, int n,
                    const Topology& tree);

// Puts the parts of each group that stands apart together, where one of them is: where the tree becomes
// shortest.  Cost: Set of the tree for each part.
void KeepTogether(const Groups& groups, Neighbourhood& tree);

// Where some part is.  Cost: n for each group that stands apart.
void KeepTogether(const Groups& groups, Topology& tree);

// Makes the edges within each group 0, which they are but for rounding.
void ClearWithin(const Groups& groups, Tree& tree);

}  // namespace zorvek::wide

#endif
