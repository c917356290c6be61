#include "tests/reference_input.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>

#include "core/eigen_rg.h"

namespace zorvek::reference {

namespace {

// 0 to 3, or -1.
int NucleotideIndex(char symbol) {
  return static_cast<int>(std::string("ACGT").find(symbol));
}

bool HasState(const NxsDataBlock& data, unsigned taxon, unsigned site) {
  return !data.IsGapState(taxon, site) && !data.IsMissingState(taxon, site) &&
         data.GetInternalRepresentation(taxon, site, 0) >= 0;
}

}  // namespace

void CountPairs(const NxsDataBlock& data, unsigned i, unsigned j, PairTable& table,
                float (&totals)[kNucleotides]) {
  for (auto& row : table) std::fill(row, row + kNucleotides, 0.0);
  std::fill(totals, totals + kNucleotides, 0.0F);
  for (unsigned site = 0; site < data.GetNChar(); ++site) {
    if (!HasState(data, i, site)) continue;
    const int a = NucleotideIndex(data.GetState(i, site, 0));
    if (a < 0 || !HasState(data, j, site)) continue;
    const int b = NucleotideIndex(data.GetState(j, site, 0));
    for (int c = 0; c < kNucleotides; ++c) {
      if (b >= 0 && b != c) continue;
      table[a][c] += 1;
      totals[c] += 1;
    }
  }
}

double Distance(PairTable& table, const float (&totals)[kNucleotides]) {
  PairTable scaled;
  double vectors[kNucleotides][kNucleotides];
  double* a[kNucleotides];
  double* z[kNucleotides];
  for (int r = 0; r < kNucleotides; ++r) {
    for (int c = 0; c < kNucleotides; ++c) {
      scaled[r][c] = (table[r][c] + table[c][r]) * 0.5 / static_cast<double>(totals[r]);
    }
    a[r] = scaled[r];
    z[r] = vectors[r];
  }
  double wr[kNucleotides] = {};
  double wi[kNucleotides];
  int iv[kNucleotides];
  double fv[kNucleotides];
  EigenRG(kNucleotides, a, wr, wi, z, iv, fv);
  double lambda = 0;
  for (const double value : wr) {
    if (value > 0 && value <= 1 - 1e-12 && value > lambda) lambda = value;
  }
  return lambda == 0 ? 0 : -0.25 * std::log(lambda);
}

void ExchangeSort(std::vector<int>& list, const std::vector<double>& distance) {
  const auto key = [&](std::size_t place) {
    return distance[static_cast<std::size_t>(list[place])];
  };
  for (std::size_t p = 0; p < list.size(); ++p) {
    for (std::size_t q = p + 1; q < list.size(); ++q) {
      if (key(p) > key(q)) std::swap(list[p], list[q]);
    }
  }
}

std::string NexusFile(std::size_t rows, std::size_t sites, const std::string& format,
                      const std::string& matrix) {
  return "#NEXUS\nBEGIN DATA;\nDIMENSIONS NTAX=" + std::to_string(rows) +
         " NCHAR=" + std::to_string(sites) + ";\nFORMAT " + format + ";\nMATRIX\n" + matrix +
         ";\nEND;\n";
}

TemporaryFile::TemporaryFile(const std::string& content) {
  const char* const directory = std::getenv("TMPDIR");
  path_ = std::string(directory != nullptr ? directory : "/tmp") + "/zorvek-XXXXXX";
  close(mkstemp(path_.data()));
  std::ofstream(path_, std::ios::binary) << content;
}

TemporaryFile::~TemporaryFile() {
  std::remove(path_.c_str());
  std::remove(LogPath().c_str());
}

}  // namespace zorvek::reference
