// Distances by model, on one thread: from the cells of an alignment to the matrix. Names are Distances/MODEL;
// items per second are pairs.
#include <benchmark/benchmark.h>

#include <random>
#include <string>

#include "wide/distance/pair_distances.h"

namespace zorvek::wide {
namespace {

constexpr std::size_t kTaxa = 1000;
constexpr std::size_t kSites = 1000;

// Sequences that branch off one another at random, with a gap at one site in 100.
Alignment Simulated() {
  std::mt19937 random(1);
  Alignment alignment;
  std::vector<std::vector<StateSet>> inner(1, std::vector<StateSet>(kSites));
  for (StateSet& cell : inner[0]) cell = static_cast<StateSet>(1 << random() % 4);
  while (inner.size() <= kTaxa) {
    std::vector<StateSet> sequence = inner[random() % inner.size()];
    for (StateSet& cell : sequence) {
      if (random() % 33 == 0) cell = static_cast<StateSet>(1 << random() % 4);
    }
    inner.push_back(sequence);
    for (StateSet& cell : sequence) {
      if (random() % 33 == 0) cell = static_cast<StateSet>(1 << random() % 4);
      if (random() % 100 == 0) cell = kNoState;
    }
    alignment.labels.push_back("t" + std::to_string(inner.size()));
    alignment.cells.push_back(sequence);
  }
  return alignment;
}

void Distances(benchmark::State& state, Model model, double gamma) {
  static const Alignment alignment = Simulated();
  const SiteList sites = AllSites(alignment);
  for (auto _ : state) {
    benchmark::DoNotOptimize(PairDistances(alignment, sites, {model, gamma}, 1));
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kTaxa * (kTaxa - 1) / 2));
}

const bool kRegistered = [] {
  for (std::size_t model = 0; model < kModels; ++model) {
    const std::string name = std::string("Distances/") + Models()[model].name;
    for (const double gamma : {0.0, 0.5}) {
      if (gamma > 0 && !Models()[model].has_gamma) continue;
      benchmark::RegisterBenchmark((name + (gamma > 0 ? " --gamma" : "")).c_str(), Distances,
                                   static_cast<Model>(model), gamma);
    }
  }
  return true;
}();

}  // namespace
}  // namespace zorvek::wide
