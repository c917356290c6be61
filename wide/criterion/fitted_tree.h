// A tree with the edge lengths that a criterion estimates for it.
#ifndef ZORVEK_WIDE_CRITERION_FITTED_TREE_H
#define ZORVEK_WIDE_CRITERION_FITTED_TREE_H

#include "wide/criterion/neighbourhood.h"
#include "zorvek/criterion.h"
#include "zorvek/tree.h"

namespace zorvek::wide {

struct FittedTree {
  Tree tree;
  double length = 0;  // under the criterion
};

// The current tree of a neighbourhood. Edge lengths within 1e-12 of the largest distance from 0 are 0.
// Cost: n^2.
FittedTree Fitted(Neighbourhood& neighbourhood, const double* const* distances);

// The same of any tree.
// Cost: as MakeNeighbourhood.  Memory: 16 n^2 bytes under ordinary least squares, else of order n log n.
FittedTree Fit(Criterion criterion, const Topology& topology, const double* const* distances);

}  // namespace zorvek::wide

#endif
