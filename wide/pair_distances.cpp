#include "wide/pair_distances.h"

#include <limits>

#include "input/pair_table.h"
#include "wide/parallel.h"

namespace zorvek::wide {

namespace {

NucleotidePlanes Planes(const Alignment& alignment, const std::vector<std::size_t>& sites) {
  NucleotidePlanes planes(alignment.Taxa(), sites.size());
  for (std::size_t taxon = 0; taxon < alignment.Taxa(); ++taxon) {
    const char* const cells = alignment.cells[taxon].data();
    for (std::size_t k = 0; k < sites.size(); ++k) {
      const char symbol = cells[sites[k]];
      if (symbol != Alignment::kNone) planes.Set(taxon, k, symbol);
    }
  }
  return planes;
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

}  // namespace

DistanceMatrix PairDistances(const Alignment& alignment, const std::vector<std::size_t>& sites,
                             int threads) {
  const NucleotidePlanes planes = Planes(alignment, sites);
  const int n = static_cast<int>(alignment.Taxa());
  DistanceMatrix distances(n);
  ForEach(n, threads, [&](int i) {
    const auto first = planes.NucleotidesOnly(static_cast<std::size_t>(i));
    for (int j = i + 1; j < n; ++j) {
      PairTable table;
      CountPairs(first.data(), planes.Planes(static_cast<std::size_t>(j)), planes.Words(), table);
      distances.Set(i, j, Distance(table));
    }
  });
  return distances;
}

}  // namespace zorvek::wide
