// The distance of two taxa is -ln(lambda)/4, lambda being the largest eigenvalue below 1 of their
// symmetrised table of nucleotide pairings, scaled to rows (pair_table.h). DM1 and CL are each one
// piece of memory behind row pointers.
#include "input/distances.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <iostream>
#include <numeric>
#include <vector>

#include "core/pair_table.h"
#include "driver/run_state.h"
#include "input/cell_symbols.h"
#include "input/nexus_reading.h"

namespace zorvek {

namespace {

[[noreturn]] void StopAtUnstablePair(unsigned first, unsigned second) {
  NxsString firstLabel = taxa->GetTaxonLabel(first);
  NxsString secondLabel = taxa->GetTaxonLabel(second);
  std::cout << "Warning taxa " << firstLabel.BlanksToUnderscores() << " and "
            << secondLabel.BlanksToUnderscores()
            << " have unstable spectrum. Remove them and relaunch the analysis." << std::endl;
  std::exit(0);
}

void FillDistances(const NucleotidePlanes& planes) {
  for (int i = 0; i < n - 1; ++i) {
    const std::vector<NucleotidePlanes::Word> first =
        planes.NucleotidesOnly(static_cast<std::size_t>(i));
    for (int j = i + 1; j < n; ++j) {
      PairTable table;
      CountPairs(first.data(), planes.Planes(static_cast<std::size_t>(j)), planes.Words(), table);
      const double distance = PairDistance(table);
      if (distance == 0) {
        StopAtUnstablePair(static_cast<unsigned>(i), static_cast<unsigned>(j));
      }
      DM1[i][j] = DM1[j][i] = distance;
    }
  }
}

void FillCandidates() {
  for (int i = 0; i < n; ++i) {
    std::iota(CL[i], CL[i] + i, 0);
    std::iota(CL[i] + i, CL[i] + n - 1, i + 1);
  }
}

}  // namespace

NucleotidePlanes ReadPlanes(const NxsDataBlock& data, std::size_t rows) {
  const unsigned sites = data.GetNChar();
  NucleotidePlanes planes(rows, sites);
  if (data.GetDataType() == NxsCharactersBlock::continuous) return planes;
  CellSymbols symbols(data);
  for (unsigned taxon = 0; taxon < rows; ++taxon) {
    const NxsDiscreteStateRow& row = data.GetDiscreteMatrixRow(taxon);
    for (unsigned site = 0; site < row.size(); ++site) {
      const char symbol = symbols.At(taxon, site, row[site]);
      if (symbol != CellSymbols::kNone) planes.Set(taxon, site, symbol);
    }
  }
  return planes;
}

void BuildLeavesMatrix(const char* inputPath) {
  NexusBlocks blocks = ReadNexus(inputPath);
  n = static_cast<int>(TaxaRead(blocks));
  taxa = blocks.taxa.release();
  trees = blocks.trees.get();
  const auto taxaCount = static_cast<std::size_t>(n);
  const NucleotidePlanes planes = ReadPlanes(*blocks.data, taxaCount);
  blocks.data.reset();
  blocks.trees.reset();
  trees = nullptr;
  blocks.assumptions.reset();

  DM1 = NewRows<double>(taxaCount, taxaCount);
  CL = NewRows<int>(taxaCount, taxaCount - std::min<std::size_t>(taxaCount, 1));
  FillDistances(planes);
  FillCandidates();
}

void ReleaseLeavesMatrix() {
  DeleteRows(DM1);
  DeleteRows(CL);
  delete taxa;
  taxa = nullptr;
  n = 0;
}

}  // namespace zorvek
