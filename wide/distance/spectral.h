// The run's distance for zorvek-wide.
#ifndef ZORVEK_WIDE_DISTANCE_SPECTRAL_H
#define ZORVEK_WIDE_DISTANCE_SPECTRAL_H

#include "wide/distance/site_planes.h"
#include "wide/distance/tiles.h"
#include "zorvek/alignment.h"
#include "zorvek/distances.h"

namespace zorvek::wide {

// The distances of PairDistance (core/pair_table.h), the first taxon of a pair being the one that comes
// first. An ambiguity code counts as its first nucleotide, RNA's U as an unknown one. 0 for a pair that
// shares at least one site and has the same nucleotide at all it shares; NaN for a pair that shares
// none, or whose spectrum is unstable. Identical sequences have the same distances to all others, those
// of the first of them, since the estimate depends on which taxon of a pair comes first.
// Cost: n x sites + n^2 / 2 x (sites / 64 + one eigenvalue), shared by the threads.
DistanceMatrix SpectralDistances(const Alignment& alignment, const SiteList& sites, int threads,
                                 const TellShare& tell = {});

}  // namespace zorvek::wide

#endif
