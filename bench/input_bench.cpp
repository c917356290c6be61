// The input stage by phase, on alignments simulated along random trees: reading (with the log), planes,
// counting, eigensystems, candidate lists, and all of it up to the starting length. Names are
// PHASE/fast/TAXA/SITES, and PHASE/slow/TAXA/SITES for the plain loops on the same data. Items per
// second are cells of the matrix, pairs of taxa, or lists.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <memory>
#include <numeric>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "core/pair_table.h"
#include "driver/run_state.h"
#include "input/distances.h"
#include "input/nexus_reading.h"
#include "tests/reference_input.h"
#include "tree/candidate_lists.h"
#include "tree/starting_tree.h"
#include "tree/tree_table.h"

namespace zorvek {
namespace {

constexpr std::size_t kPairSample = 20000;  // pairs whose tables go through the eigensystem

// Sequences that branch off one another at random and change at 3 sites in 100 each time, with a gap at
// one site in 100.
std::string SimulatedFile(std::size_t rows, std::size_t sites) {
  std::mt19937 random(1);
  const auto draw = [&random](std::size_t bound) { return random() % bound; };
  std::vector<std::string> inner(1, std::string(sites, 'A'));
  for (char& symbol : inner[0]) symbol = "ACGT"[draw(4)];
  std::string matrix;
  while (inner.size() <= rows) {
    std::string sequence = inner[draw(inner.size())];
    for (char& symbol : sequence) {
      if (draw(33) == 0) symbol = "ACGT"[draw(4)];
    }
    inner.push_back(sequence);
    for (char& symbol : sequence) {
      if (draw(33) == 0) symbol = "ACGT"[draw(4)];
      if (draw(100) == 0) symbol = '-';
    }
    matrix += "t" + std::to_string(inner.size()) + " " + sequence + "\n";
  }
  return reference::NexusFile(rows, sites, "DATATYPE=DNA GAP=- MISSING=?", matrix);
}

// Standard output is the benchmark's own.
class Silence {
 public:
  Silence() : outside_(std::cout.rdbuf(nowhere_.rdbuf())) {}
  ~Silence() { std::cout.rdbuf(outside_); }
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;

 private:
  std::ostringstream nowhere_;
  std::streambuf* outside_;
};

struct Alignment {
  explicit Alignment(const benchmark::State& state)
      : rows(static_cast<unsigned>(state.range(0))),
        sites(static_cast<std::size_t>(state.range(1))),
        file(SimulatedFile(rows, sites)) {}

  NexusBlocks Read() const {
    const Silence silence;
    return ReadNexus(file.Path());
  }

  unsigned rows;
  std::size_t sites;
  reference::TemporaryFile file;
};

void CountItems(benchmark::State& state, std::size_t perIteration) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(perIteration));
}

template <class Visit>
void ForEachPair(unsigned rows, Visit visit) {
  for (unsigned i = 0; i < rows; ++i) {
    for (unsigned j = i + 1; j < rows; ++j) visit(i, j);
  }
}

void Reading(benchmark::State& state) {
  const Alignment alignment(state);
  for (auto _ : state) benchmark::DoNotOptimize(TaxaRead(alignment.Read()));
  CountItems(state, alignment.rows * alignment.sites);
}

void Planes(benchmark::State& state) {
  const Alignment alignment(state);
  const NexusBlocks blocks = alignment.Read();
  for (auto _ : state) benchmark::DoNotOptimize(ReadPlanes(*blocks.data, alignment.rows));
  CountItems(state, alignment.rows * alignment.sites);
}

void CountFast(benchmark::State& state) {
  const Alignment alignment(state);
  const NucleotidePlanes planes = ReadPlanes(*alignment.Read().data, alignment.rows);
  PairTable table;
  for (auto _ : state) {
    for (unsigned i = 0; i < alignment.rows; ++i) {
      const auto first = planes.NucleotidesOnly(i);
      for (unsigned j = i + 1; j < alignment.rows; ++j) {
        CountPairs(first.data(), planes.Planes(j), planes.Words(), table);
        benchmark::DoNotOptimize(table);
      }
    }
  }
  CountItems(state, std::size_t{alignment.rows} * (alignment.rows - 1) / 2);
}

void CountSlow(benchmark::State& state) {
  const Alignment alignment(state);
  const NexusBlocks blocks = alignment.Read();
  PairTable table;
  float totals[kNucleotides];
  for (auto _ : state) {
    ForEachPair(alignment.rows, [&](unsigned i, unsigned j) {
      reference::CountPairs(*blocks.data, i, j, table, totals);
      benchmark::DoNotOptimize(table);
    });
  }
  CountItems(state, std::size_t{alignment.rows} * (alignment.rows - 1) / 2);
}

struct Table {
  PairTable counts;
  float totals[kNucleotides];
};

std::vector<Table> SampleTables(const Alignment& alignment) {
  const NucleotidePlanes planes = ReadPlanes(*alignment.Read().data, alignment.rows);
  std::vector<Table> tables;
  ForEachPair(alignment.rows, [&](unsigned i, unsigned j) {
    if (tables.size() == kPairSample) return;
    Table table = {};
    CountPairs(planes.NucleotidesOnly(i).data(), planes.Planes(j), planes.Words(), table.counts);
    for (const auto& row : table.counts) {
      for (int c = 0; c < kNucleotides; ++c) table.totals[c] += static_cast<float>(row[c]);
    }
    tables.push_back(table);
  });
  return tables;
}

template <class Distance>
void Eigensystems(benchmark::State& state, Distance distance) {
  const std::vector<Table> tables = SampleTables(Alignment(state));
  for (auto _ : state) {
    for (Table table : tables) benchmark::DoNotOptimize(distance(table));
  }
  CountItems(state, tables.size());
}

void EigenFast(benchmark::State& state) {
  Eigensystems(state, [](Table& table) { return PairDistance(table.counts); });
}

void EigenSlow(benchmark::State& state) {
  Eigensystems(state, [](Table& table) { return reference::Distance(table.counts, table.totals); });
}

void SortSlow() {
  for (int i = 0; i < n; ++i) {
    std::vector<int> list(CL[i], CL[i] + n - 1);
    reference::ExchangeSort(list, std::vector<double>(DM1[i], DM1[i] + n));
    std::copy(list.begin(), list.end(), CL[i]);
  }
}

void CandidateLists(benchmark::State& state, void (*sort)()) {
  const Alignment alignment(state);
  {
    const Silence silence;
    BuildLeavesMatrix(alignment.file.Path());
  }
  for (auto _ : state) {
    state.PauseTiming();
    for (int i = 0; i < n; ++i) {
      std::iota(CL[i], CL[i] + i, 0);
      std::iota(CL[i] + i, CL[i] + n - 1, i + 1);
    }
    state.ResumeTiming();
    sort();
  }
  CountItems(state, alignment.rows);
  ReleaseLeavesMatrix();
}

void StartingLength(benchmark::State& state) {
  const Alignment alignment(state);
  const Silence silence;
  for (auto _ : state) {
    BuildLeavesMatrix(alignment.file.Path());
    Init();
    DJT();
    benchmark::DoNotOptimize(opt_val);
    Finalize();
    ReleaseLeavesMatrix();
  }
}

const std::vector<std::vector<std::int64_t>> kSizes = {{100, 500},   {100, 30000},  {200, 1000},
                                                       {1000, 1000}, {1000, 10000}, {5000, 1000}};

void AllSizes(benchmark::internal::Benchmark* phase) {
  for (const auto& size : kSizes) phase->Args(size);
  phase->Unit(benchmark::kMillisecond);
}

void BearableSizes(benchmark::internal::Benchmark* phase) {
  phase->Args({100, 500})->Args({200, 1000})->Unit(benchmark::kMillisecond);
}

BENCHMARK(Reading)->Name("Reading/fast")->Apply(AllSizes);
BENCHMARK(Planes)->Name("Planes/fast")->Apply(AllSizes);
BENCHMARK(CountFast)->Name("Counting/fast")->Apply(AllSizes);
BENCHMARK(CountSlow)->Name("Counting/slow")->Apply(BearableSizes);
BENCHMARK(EigenFast)->Name("Eigensystems/fast")->Apply(AllSizes);
BENCHMARK(EigenSlow)->Name("Eigensystems/slow")->Apply(AllSizes);
BENCHMARK_CAPTURE(CandidateLists, fast, BuildCL)->Apply(AllSizes);
BENCHMARK_CAPTURE(CandidateLists, slow, SortSlow)->Apply(BearableSizes)->Args({1000, 1000});
BENCHMARK(StartingLength)->Name("StartingLength/fast")->Apply(AllSizes);

}  // namespace
}  // namespace zorvek
