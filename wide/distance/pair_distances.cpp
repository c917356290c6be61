#include "wide/distance/pair_distances.h"

#include <atomic>
#include <cmath>
#include <limits>

#include "core/index.h"
#include "wide/distance/spectral.h"
#include "wide/distance/tiles.h"

namespace zorvek::wide {

namespace {

constexpr double kUndefined = std::numeric_limits<double>::quiet_NaN();
constexpr double kSaturated = std::numeric_limits<double>::infinity();

// The definite nucleotides alone.
constexpr SiteCodes DefiniteTableCodes() {
  SiteCodes codes{};
  for (const StateSet state : {kA, kC, kG, kT}) codes[state] = state;
  return codes;
}

double Compared(const PairTable& table) {
  double sum = 0;
  for (const auto& row : table) sum += row[0] + row[1] + row[2] + row[3];
  return sum;
}

// Calls take(i, j, counts) for every pair i < j, with their tables only, or with all but these.
template <typename Take>
void ForEachTable(const NucleotidePlanes& planes, int n, int threads, const TellShare& tell,
                  const Take& take) {
  ForEachStretch(n, threads, tell, [&](int i, int from, int to) {
    PairCounts counts;
    for (int j = from; j < to; ++j) {
      CountPairs(planes.Planes(Index(i)), planes.Planes(Index(j)), planes.Words(), counts.table);
      counts.compared = Compared(counts.table);
      take(i, j, counts);
    }
  });
}

template <typename Take>
void ForEachCounts(const SitePlanes& planes, int threads, const TellShare& tell, const Take& take) {
  ForEachStretch(planes.Taxa(), threads, tell, [&](int i, int from, int to) {
    PairCounts counts[kTileColumns];
    planes.Count(i, from, to, counts);
    for (int j = from; j < to; ++j) take(i, j, counts[j - from]);
  });
}

double Distance(const Formula& formula, const PairCounts& counts) {
  if (counts.compared == 0) return kUndefined;
  const double distance = formula(counts);
  return distance <= kMostDistance ? distance : kSaturated;
}

DistanceMatrix SymmetricDistances(const Alignment& alignment, const SiteList& sites,
                                  const ModelSettings& settings, int threads,
                                  const TellShare& tell) {
  const ModelRow& row = RowOf(settings.model);
  const SitePlanes planes(alignment, sites, threads);
  const Formula formula = row.formula(planes.NucleotideShares(), RateTerm(settings.gamma));
  DistanceMatrix distances(planes.Taxa());
  const auto take = [&](int i, int j, const PairCounts& counts) {
    distances.Set(i, j, Distance(formula, counts));
  };
  if (row.needs_table) {
    ForEachTable(TablePlanes(alignment, sites, DefiniteTableCodes(), threads), planes.Taxa(),
                 threads, tell, take);
  } else {
    ForEachCounts(planes, threads, tell, take);
  }
  return distances;
}

// Counts the pairs of each kind, and gives the saturated ones their stand-in. If all finite distances
// are 0, any other number is as good.
PairKinds Settle(DistanceMatrix& matrix) {
  PairKinds kinds;
  for (int i = 0; i < matrix.Size(); ++i) {
    for (int j = i + 1; j < matrix.Size(); ++j) {
      const double distance = matrix(i, j);
      if (std::isfinite(distance)) {
        ++kinds.finite;
        kinds.largest = std::max(kinds.largest, distance);
      } else if (distance == kSaturated) {
        ++kinds.saturated;
      }
    }
  }
  if (kinds.saturated == 0) return kinds;
  if (kinds.largest > 0) kinds.stand_in = kStandIn * kinds.largest;
  for (int i = 0; i < matrix.Size(); ++i) {
    for (int j = i + 1; j < matrix.Size(); ++j) {
      if (matrix(i, j) == kSaturated) matrix.Set(i, j, kinds.stand_in);
    }
  }
  return kinds;
}

}  // namespace

EstimatedDistances PairDistances(const Alignment& alignment, const SiteList& sites,
                                 const ModelSettings& settings, int threads,
                                 const TellShare& tell) {
  DistanceMatrix distances = settings.model == Model::kSpectral
                                 ? SpectralDistances(alignment, sites, threads, tell)
                                 : SymmetricDistances(alignment, sites, settings, threads, tell);
  const PairKinds kinds = Settle(distances);
  return {std::move(distances), kinds};
}

std::array<long, kModels> SaturatedPairs(const Alignment& alignment, int threads) {
  const SiteList sites = AllSites(alignment);
  const SitePlanes planes(alignment, sites, threads);
  std::array<Formula, kModels> formulas;
  for (std::size_t model = 0; model < kModels; ++model) {
    const auto make = Models()[model].formula;
    if (make) formulas[model] = make(planes.NucleotideShares(), RateTerm(0));
  }
  std::array<std::atomic<long>, kModels> saturated{};
  const auto take_if = [&](bool table) {
    return [&, table](int, int, const PairCounts& counts) {
      for (std::size_t model = 0; model < kModels; ++model) {
        if (!formulas[model] || Models()[model].needs_table != table) continue;
        if (Distance(formulas[model], counts) == kSaturated) ++saturated[model];
      }
    };
  };
  ForEachCounts(planes, threads, {}, take_if(false));
  ForEachTable(TablePlanes(alignment, sites, DefiniteTableCodes(), threads), planes.Taxa(), threads,
               {}, take_if(true));
  std::array<long, kModels> counts{};
  std::copy(saturated.begin(), saturated.end(), counts.begin());
  return counts;
}

UncountedCells CountUncounted(const Alignment& alignment) {
  UncountedCells uncounted;
  for (const auto& cells : alignment.cells) {
    for (const StateSet states : cells) {
      if (states == kNoState) {
        ++uncounted.gaps;
      } else if ((states & (states - 1)) != 0) {
        ++uncounted.ambiguous;
      }
    }
  }
  return uncounted;
}

EstimatedDistances EstimateDistances(const Alignment& alignment, const ModelSettings& settings,
                                     int threads, const std::function<void(double)>& on_progress) {
  return PairDistances(alignment, AllSites(alignment), settings, threads, on_progress);
}

}  // namespace zorvek::wide
