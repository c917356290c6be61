// The edge lengths that a criterion gives a tree, without the tables of its search.
#ifndef ZORVEK_WIDE_CRITERION_EDGE_LENGTHS_H
#define ZORVEK_WIDE_CRITERION_EDGE_LENGTHS_H

#include <vector>

#include "wide/data/topology.h"

namespace zorvek::wide {

// Of both: by node, the length of the edge between it and its neighbour on the way to taxon 0; that of taxon
// 0 itself is 0. They may be negative.
// Requires: n >= 4, a symmetric matrix of finite numbers.

// Those of balanced minimum evolution [Desper2002].
// Cost: n^2, and for each node its distance from taxon 0.  Memory: of order n log n.
std::vector<double> BalancedLengths(const Topology& topology, const double* const* distances);

// Those of ordinary least squares [Rzhetsky1993].
// Cost: n^2, and for each taxon its distance from taxon 0.  Memory: of order n.
std::vector<double> OlsLengths(const Topology& topology, const double* const* distances);

}  // namespace zorvek::wide

#endif
