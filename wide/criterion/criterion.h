// The neighbourhood of each criterion.
#ifndef ZORVEK_WIDE_CRITERION_CRITERION_H
#define ZORVEK_WIDE_CRITERION_CRITERION_H

#include <memory>
#include <vector>

#include "wide/criterion/criterion.h"
#include "wide/criterion/neighbourhood.h"
#include "zorvek/criterion.h"

namespace zorvek::wide {

// The neighbourhood of a tree under a criterion. Under the balanced one its leaves may be some of the taxa
// of the matrix, by their numbers there.
// Requires: n >= 4, a symmetric matrix of finite numbers that outlives it.
std::unique_ptr<Neighbourhood> MakeNeighbourhood(Criterion criterion, const Topology& topology,
                                                 const double* const* distances, int threads = 1,
                                                 const std::vector<int>& taxa = {});

}  // namespace zorvek::wide

#endif
