#include "wide/distance/spectral.h"

#include <limits>
#include <map>
#include <vector>

#include "core/index.h"
#include "core/pair_table.h"
#include "wide/distance/tiles.h"

namespace zorvek::wide {

namespace {

constexpr std::uint8_t kUnknown = 15;  // counts as each nucleotide in the second taxon of a pair

SiteCodes FirstStateCodes(bool rna) {
  SiteCodes codes{};
  for (unsigned set = 1; set < codes.size(); ++set) {
    const auto first = static_cast<StateSet>(set & (~set + 1));
    codes[set] = rna && first == kT ? kUnknown : first;
  }
  return codes;
}

double Distance(PairTable& table) {
  double same = 0;
  double different = 0;
  for (int r = 0; r < kNucleotides; ++r) {
    for (int c = 0; c < kNucleotides; ++c) (r == c ? same : different) += table[r][c];
  }
  if (different == 0 && same > 0) return 0;
  const double distance = PairDistance(table);
  return distance == 0 ? std::numeric_limits<double>::quiet_NaN() : distance;
}

// For each taxon the first that has the same planes.
std::vector<int> FirstOfSame(const NucleotidePlanes& planes, int n) {
  const std::size_t words = kNucleotides * planes.Words();
  std::map<std::vector<PlaneWord>, int> first;
  std::vector<int> firsts;
  for (int i = 0; i < n; ++i) {
    const PlaneWord* const begin = planes.Planes(Index(i));
    firsts.push_back(first.emplace(std::vector(begin, begin + words), i).first->second);
  }
  return firsts;
}

}  // namespace

DistanceMatrix SpectralDistances(const Alignment& alignment, const SiteList& sites, int threads) {
  const NucleotidePlanes planes =
      TablePlanes(alignment, sites, FirstStateCodes(alignment.rna), threads);
  const int n = static_cast<int>(alignment.Taxa());
  DistanceMatrix distances(n);
  ForEach(n, threads, [&](int i, int) {
    const auto nucleotides = planes.NucleotidesOnly(Index(i));
    for (int j = i; j < n; ++j) {  // a sequence shares no site with itself if it has none
      PairTable table;
      CountPairs(nucleotides.data(), planes.Planes(Index(j)), planes.Words(), table);
      distances.Set(i, j, Distance(table));
    }
  });
  const std::vector<int> first = FirstOfSame(planes, n);
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) distances.Set(i, j, distances(first[Index(i)], first[Index(j)]));
  }
  for (int i = 0; i < n; ++i) distances.Set(i, i, 0);
  return distances;
}

}  // namespace zorvek::wide
