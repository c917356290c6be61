// Distances of aligned sequences under a model, and what of the data they do not use.
#ifndef ZORVEK_WIDE_DISTANCE_PAIR_DISTANCES_H
#define ZORVEK_WIDE_DISTANCE_PAIR_DISTANCES_H

#include <array>

#include "wide/distance/models.h"
#include "wide/distance/site_planes.h"
#include "wide/distance/tiles.h"
#include "zorvek/alignment.h"
#include "zorvek/distances.h"

namespace zorvek::wide {

// A pair that is too far apart for the model gets this many times the largest finite distance.
// (On trees that are deep enough to have such pairs: bench/accuracy.sh --stand-in.)
constexpr double kStandIn = 1;

// The distances over `sites`, the frequencies being those of all taxa over these sites. A pair without
// a compared site has no distance, NaN, as under kSpectral one whose spectrum is unstable.
// Cost: n x sites + n^2 / 2 x (sites / 64 + one formula), shared by the threads.
EstimatedDistances PairDistances(const Alignment& alignment, const SiteList& sites,
                                 const ModelSettings& settings, int threads,
                                 const TellShare& tell = {});

// How many pairs would be saturated under each model, over all sites; 0 for kSpectral.
// Cost: as the distances under all models.
std::array<long, kModels> SaturatedPairs(const Alignment& alignment, int threads);

// Cells that count in no pair under the symmetric models.
struct UncountedCells {
  long gaps = 0;  // and missing ones
  long ambiguous = 0;
};
UncountedCells CountUncounted(const Alignment& alignment);

}  // namespace zorvek::wide

#endif
