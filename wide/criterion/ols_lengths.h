// The edge lengths of ordinary least squares, without the table of all sums.
#ifndef ZORVEK_WIDE_CRITERION_OLS_LENGTHS_H
#define ZORVEK_WIDE_CRITERION_OLS_LENGTHS_H

#include <vector>

#include "wide/data/topology.h"

namespace zorvek::wide {

// By node, the length of the edge between it and its neighbour on the way to taxon 0 [Rzhetsky1993]; that
// of taxon 0 itself is 0. They may be negative.
// Requires: n >= 4, a symmetric matrix of finite numbers.
// Cost: n^2, and for each taxon its distance from taxon 0.  Memory: of order n.
std::vector<double> OlsLengths(const Topology& topology, const double* const* distances);

}  // namespace zorvek::wide

#endif
