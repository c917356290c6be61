// Neighbour joining with bounds, in double and single precision, beside the plain double loop on the same
// distances: of sequences that evolved along a random tree, between random points, and noise. Names are
// WHAT/TAXA; `rows` is how many rows a join searches.
#include <benchmark/benchmark.h>

#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "tests/plain_joining.h"
#include "wide/search/neighbour_joining.h"

namespace zorvek::wide {
namespace {

constexpr int kSites = 1000;

struct Rows {
  explicit Rows(int n) : values(Index(n) * Index(n)) {
    for (int i = 0; i < n; ++i) rows.push_back(&values[Index(i) * Index(n)]);
  }
  void Fill(const std::function<double(int, int)>& distance) {
    for (int i = 0; i < static_cast<int>(rows.size()); ++i) {
      for (int j = 0; j < i; ++j) rows[Index(i)][j] = rows[Index(j)][i] = distance(i, j);
    }
  }
  std::vector<double> values;
  std::vector<double*> rows;
};

// A lineage splits at random, and all of them change at a few sites, until there are n.
std::vector<std::string> Sequences(int n, std::mt19937& generator) {
  std::vector<std::string> sequences{std::string(kSites, 0)};
  const auto change = [&](std::string& sequence, double mean) {
    for (int k = std::poisson_distribution<int>(mean)(generator); k > 0; --k) {
      sequence[generator() % kSites] = static_cast<char>(generator() % 4);
    }
  };
  while (static_cast<int>(sequences.size()) < n) {
    sequences.push_back(sequences[generator() % sequences.size()]);
    const double mean = 0.07 * kSites / static_cast<double>(sequences.size());
    for (std::string& sequence : sequences) change(sequence, mean);
  }
  return sequences;
}

// Of Jukes and Cantor.
double SequenceDistance(const std::string& a, const std::string& b) {
  int differences = 0;
  for (std::size_t site = 0; site < kSites; ++site) differences += a[site] != b[site];
  return -0.75 * std::log(std::max(1 - differences / (0.75 * kSites), 0.01));
}

enum Kind { kSequences, kPlane, kSpace, kNoise };

const Rows& Distances(Kind kind, int n) {
  static std::map<std::pair<Kind, int>, Rows> made;
  const auto [entry, is_new] = made.try_emplace({kind, n}, n);
  Rows& matrix = entry->second;
  if (!is_new) return matrix;
  std::mt19937 generator(1);
  std::uniform_real_distribution<double> unit(0, 1);
  if (kind == kNoise) {
    matrix.Fill([&](int, int) { return unit(generator); });
  } else if (kind == kSequences) {
    const std::vector<std::string> sequences = Sequences(n, generator);
    matrix.Fill(
        [&](int i, int j) { return SequenceDistance(sequences[Index(i)], sequences[Index(j)]); });
  } else {
    std::vector<std::vector<double>> points(Index(n), std::vector<double>(kind == kPlane ? 2 : 10));
    for (auto& point : points) {
      for (double& x : point) x = unit(generator);
    }
    matrix.Fill([&](int i, int j) {
      double sum = 0;
      for (std::size_t k = 0; k < points[0].size(); ++k) {
        sum += std::pow(points[Index(i)][k] - points[Index(j)][k], 2);
      }
      return std::sqrt(sum);
    });
  }
  return matrix;
}

template <typename Number>
void Bounded(benchmark::State& state, Kind kind) {
  const int n = static_cast<int>(state.range(0));
  const Rows& matrix = Distances(kind, n);
  long searched = 0;
  Joining joining;
  joining.searched = &searched;
  for (auto _ : state) {
    benchmark::DoNotOptimize(JoinNeighbours<Number>(n, matrix.rows.data(), joining));
  }
  state.counters["rows"] = static_cast<double>(searched - n) / (n - 3);
}

void Plain(benchmark::State& state, Kind kind) {
  const int n = static_cast<int>(state.range(0));
  const Rows& matrix = Distances(kind, n);
  for (auto _ : state) benchmark::DoNotOptimize(test::JoinPlainly<double>(n, matrix.rows.data()));
}

void Taxa(benchmark::internal::Benchmark* benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->Arg(500)->Arg(1000)->Arg(2000)->Arg(5000);
}

void FewerTaxa(benchmark::internal::Benchmark* benchmark) {
  benchmark->Unit(benchmark::kMillisecond)->Arg(500)->Arg(1000);
}

constexpr auto Double = Bounded<double>;
constexpr auto Single = Bounded<float>;

BENCHMARK_CAPTURE(Double, sequences, kSequences)->Apply(Taxa)->Arg(10000);
BENCHMARK_CAPTURE(Single, sequences, kSequences)->Apply(Taxa)->Arg(10000);
BENCHMARK_CAPTURE(Plain, sequences, kSequences)->Apply(FewerTaxa);
BENCHMARK_CAPTURE(Double, plane, kPlane)->Apply(Taxa);
BENCHMARK_CAPTURE(Double, space, kSpace)->Apply(Taxa);
BENCHMARK_CAPTURE(Double, noise, kNoise)->Apply(Taxa);

}  // namespace
}  // namespace zorvek::wide
