// A tree with the edge lengths that a criterion estimates for it.
#ifndef ZORVEK_WIDE_CRITERION_FITTED_TREE_H
#define ZORVEK_WIDE_CRITERION_FITTED_TREE_H

#include "wide/data/topology.h"
#include "zorvek/criterion.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

struct FittedTree {
  Tree tree;
  double length = 0;  // under the criterion
};

// Edge lengths within 1e-12 of the largest distance from 0 are 0. The length is that of all edges, under
// least squares of the positive ones.
// Cost: as that of BalancedLengths or OlsLengths, in time and in memory.
FittedTree Fit(Criterion criterion, const Topology& topology, const double* const* distances);

}  // namespace zorvek::wide

#endif
