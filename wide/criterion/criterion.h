// The neighbourhood of each criterion.
#ifndef ZORVEK_WIDE_CRITERION_CRITERION_H
#define ZORVEK_WIDE_CRITERION_CRITERION_H

#include <memory>
#include <vector>

#include "wide/criterion/neighbourhood.h"
#include "zorvek/criterion.h"

namespace zorvek::wide {

// Taxa from which on trees are joined, and searched under least squares, in single precision: distances
// are no surer than to three digits or four.
constexpr int kSinglePrecision = 4000;

// The largest of the distances by its size.  Cost: n^2.
double LargestDistance(int n, const double* const* distances);

// The neighbourhood of a tree under a criterion. Under the balanced one its leaves may be some of the taxa
// of the matrix, by their numbers there.
// Requires: n >= 4, a symmetric matrix of finite numbers that outlives it, 0 in its diagonal.
std::unique_ptr<Neighbourhood> MakeNeighbourhood(Criterion criterion, const Topology& topology,
                                                 const double* const* distances, int threads = 1,
                                                 const std::vector<int>& taxa = {});

}  // namespace zorvek::wide

#endif
