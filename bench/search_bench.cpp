// The search: evaluations of trees not seen before, passes (an evaluation and a fast local search,
// one interchange after the other) and whole search steps, each beside the plain loops on the same
// data. As in a run, one FollowerScope holds all of them. Names are WHAT/fast/TAXA and
// WHAT/slow/TAXA; items per second are evaluations, passes and steps.
#include <benchmark/benchmark.h>

#include <cmath>
#include <random>
#include <utility>

#include "driver/run.h"
#include "driver/run_state.h"
#include "tests/data.h"
#include "tests/reference.h"
#include "tree/fast_local_search.h"
#include "tree/tree_follower.h"
#include "tree/tree_length.h"

namespace zorvek {
namespace {

constexpr std::uint32_t kSeed = 1;
constexpr int kWarmUp = 1000;  // search steps made before the measured ones

// Distances along a random tree with 10 % of noise, so that there is something to search for;
// rounded to multiples of 2^-20, on which fast and plain arithmetic agree to the bit and so do the
// same work.
test::Workspace Simulated(const benchmark::State& state) {
  const int taxa_count = static_cast<int>(state.range(0));
  auto distance = test::TreeLikeDistances(taxa_count, 0.1, kSeed);
  const auto dyadic = [distance](int i, int j) mutable {
    return std::ldexp(std::round(std::ldexp(distance(i, j), 20)), -20);
  };
  return test::Workspace(taxa_count, dyadic, kSeed);
}

void Evaluation(benchmark::State& state, double (*evaluate)(TreeTable)) {
  const test::Workspace workspace = Simulated(state);
  const FollowerScope scope;
  std::mt19937 generator(kSeed);
  for (TreeTable tree : {T1, T2}) test::Shuffle(tree, generator);
  scope.Follow(T1);
  for (auto _ : state) {
    benchmark::DoNotOptimize(evaluate(T1));
    std::swap(T1, T2);
  }
  state.SetItemsProcessed(state.iterations());
}

void Passes(benchmark::State& state, double (*evaluate)(TreeTable), bool (*improve)(TreeTable)) {
  const test::Workspace workspace = Simulated(state);
  const FollowerScope scope;
  std::mt19937 generator(kSeed);
  const auto restart = [&] {
    test::Shuffle(T1, generator);
    evaluate(T1);
  };
  restart();
  for (auto _ : state) {
    benchmark::DoNotOptimize(evaluate(T1));
    if (improve(T1)) continue;
    state.PauseTiming();
    restart();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations());
}

void WarmUp() {
  Search search;
  for (int step = 0; step < kWarmUp; ++step) search.Step();
  r->seedWithValue(kSeed);
}

void FastSteps(benchmark::State& state) {
  const test::Workspace workspace = Simulated(state);
  const FollowerScope scope;
  WarmUp();
  Search search;
  for (auto _ : state) search.Step();
  state.SetItemsProcessed(state.iterations());
}

void SlowSteps(benchmark::State& state) {
  const test::Workspace workspace = Simulated(state);
  WarmUp();
  reference::Search search(kSeed);
  CopyTree(OPT, search.best.data());
  CopyTree(T1, search.current.data());
  search.best_length = opt_val;
  for (auto _ : state) search.Step();
  state.SetItemsProcessed(state.iterations());
}

void Fast(benchmark::internal::Benchmark* benchmark) {
  for (const int taxa_count : {10, 20, 50, 100, 200, 500, 1000, 2000}) benchmark->Arg(taxa_count);
}

void Slow(benchmark::internal::Benchmark* benchmark) {
  for (const int taxa_count : {10, 20, 50, 100, 200, 500}) benchmark->Arg(taxa_count);
}

BENCHMARK_CAPTURE(Evaluation, fast, Evaluate)->Apply(Fast);
BENCHMARK_CAPTURE(Evaluation, slow, reference::Evaluate<double>)->Apply(Slow);
BENCHMARK_CAPTURE(Passes, fast, Evaluate, FastLocalSearch)->Apply(Fast);
BENCHMARK_CAPTURE(Passes, slow, reference::Evaluate<double>, reference::FastLocalSearch)
    ->Apply(Slow);

// Fast and slow make the same number of steps from the same tree with the same draws.
const bool registered = [] {
  constexpr std::pair<int, int> kSteps[] = {{10, 50000}, {20, 10000}, {50, 1000},   {100, 100},
                                            {200, 20},   {500, 4},    {1000, 2000}, {2000, 500}};
  for (const auto& [taxa_count, steps] : kSteps) {
    benchmark::RegisterBenchmark("Steps/fast", FastSteps)->Arg(taxa_count)->Iterations(steps);
    if (taxa_count > 500) continue;
    benchmark::RegisterBenchmark("Steps/slow", SlowSteps)->Arg(taxa_count)->Iterations(steps);
  }
  return true;
}();

}  // namespace
}  // namespace zorvek
