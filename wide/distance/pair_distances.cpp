#include "wide/distance/pair_distances.h"

#include <array>
#include <limits>
#include <map>

#include "core/pair_table.h"
#include "core/parallel.h"

namespace zorvek::wide {

namespace {

constexpr char kNone = '\0';  // the symbol of no state

// The run's symbol of each set of states: its first one in the order A, C, G, T. U counts as an
// unknown nucleotide in RNA.
std::array<char, 16> Symbols(bool rna) {
  std::array<char, 16> symbols{kNone};
  for (unsigned set = 1; set < symbols.size(); ++set) {
    symbols[set] = (set & kA) ? 'A' : (set & kC) ? 'C' : (set & kG) ? 'G' : rna ? 'U' : 'T';
  }
  return symbols;
}

NucleotidePlanes Planes(const Alignment& alignment, const std::vector<std::size_t>& sites) {
  NucleotidePlanes planes(alignment.Taxa(), sites.size());
  const std::array<char, 16> symbols = Symbols(alignment.rna);
  for (std::size_t taxon = 0; taxon < alignment.Taxa(); ++taxon) {
    const StateSet* const cells = alignment.cells[taxon].data();
    for (std::size_t k = 0; k < sites.size(); ++k) {
      const char symbol = symbols[cells[sites[k]]];
      if (symbol != kNone) planes.Set(taxon, k, symbol);
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

// For each taxon the first that has the same planes.
std::vector<int> FirstOfSame(const NucleotidePlanes& planes, int n) {
  const std::size_t words = kNucleotides * planes.Words();
  std::map<std::vector<NucleotidePlanes::Word>, int> first;
  std::vector<int> firsts;
  for (int i = 0; i < n; ++i) {
    const auto* const begin = planes.Planes(static_cast<std::size_t>(i));
    firsts.push_back(first.emplace(std::vector(begin, begin + words), i).first->second);
  }
  return firsts;
}

}  // namespace

DistanceMatrix PairDistances(const Alignment& alignment, const std::vector<std::size_t>& sites,
                             int threads) {
  const NucleotidePlanes planes = Planes(alignment, sites);
  const int n = static_cast<int>(alignment.Taxa());
  const std::vector<int> first_of_same = FirstOfSame(planes, n);
  const auto first = [&](int taxon) { return first_of_same[static_cast<std::size_t>(taxon)]; };
  DistanceMatrix distances(n);
  ForEach(n, threads, [&](int i, int) {
    if (first(i) != i) return;
    const auto nucleotides = planes.NucleotidesOnly(static_cast<std::size_t>(i));
    for (int j = i; j < n; ++j) {  // a sequence shares no site with itself if it has none
      if (first(j) != j) continue;
      PairTable table;
      CountPairs(nucleotides.data(), planes.Planes(static_cast<std::size_t>(j)), planes.Words(),
                 table);
      distances.Set(i, j, Distance(table));
    }
  });
  for (int i = 0; i < n; ++i) {
    for (int j = 0; j < i; ++j) distances.Set(i, j, distances(first(i), first(j)));
  }
  for (int i = 0; i < n; ++i) distances.Set(i, i, 0);
  return distances;
}

}  // namespace zorvek::wide
