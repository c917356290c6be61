// The distances of a run: estimated, and complete.
#ifndef ZORVEK_WIDE_PROGRAM_DISTANCES_H
#define ZORVEK_WIDE_PROGRAM_DISTANCES_H

#include "wide/program/input.h"
#include "wide/program/options.h"

namespace zorvek::wide {

// Estimates the distances of `input`, unless they were given, and leaves out taxa where that is
// wanted, so that every pair has one. Throws Error if a pair without a distance is left.
void EstimateDistances(const Options& options, Input& input);

}  // namespace zorvek::wide

#endif
