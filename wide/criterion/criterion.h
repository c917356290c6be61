// The neighbourhood of each criterion.
#ifndef ZORVEK_WIDE_CRITERION_CRITERION_H
#define ZORVEK_WIDE_CRITERION_CRITERION_H

#include <memory>

#include "wide/criterion/criterion.h"
#include "wide/criterion/neighbourhood.h"
#include "zorvek/criterion.h"

namespace zorvek::wide {

// The neighbourhood of a tree under a criterion.
// Requires: n >= 4, a symmetric matrix of finite numbers that outlives it.
std::unique_ptr<Neighbourhood> MakeNeighbourhood(Criterion criterion, const Topology& topology,
                                                 const double* const* distances, int threads = 1);

}  // namespace zorvek::wide

#endif
