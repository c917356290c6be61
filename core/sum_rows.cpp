#include "core/sum_rows.h"

#include <algorithm>

namespace zorvek {

namespace {

// sum[i] = a[i] + b[i]
__attribute__((always_inline)) inline void AddWideLoop(const std::int64_t* a, const std::int64_t* b,
                                                       std::int64_t* __restrict sum,
                                                       std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) sum[i] = a[i] + b[i];
}

void AddWidePlain(const std::int64_t* a, const std::int64_t* b, std::int64_t* sum,
                  std::size_t count) {
  AddWideLoop(a, b, sum, count);
}

#if defined(__x86_64__)
__attribute__((target("avx2"))) void AddWideAvx2(const std::int64_t* a, const std::int64_t* b,
                                                 std::int64_t* sum, std::size_t count) {
  AddWideLoop(a, b, sum, count);
}
#endif

// The widest row addition this processor has.
auto ChooseAddWide() {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) return AddWideAvx2;
#endif
  return AddWidePlain;
}

// The power of two of which `largest` is at most the double, as an exponent.
int Exponent(double largest) {
  int exponent;
  std::frexp(largest, &exponent);
  return exponent;
}

}  // namespace

SumRows::SumRows(int n, const double* const* distances, Precision precision)
    : n_(n), add_wide_(ChooseAddWide()) {
  const std::size_t columns = Index(n), inner = Index(n - 2);
  switch (precision) {
    case Precision::kDouble:
      wide_ = MakeLargeTable<std::int64_t>((columns + inner) * columns);
      FillWide(distances);
      break;
    case Precision::kSingle:
      narrow_ = MakeLargeTable<std::int32_t>(inner * columns);
      distances_ = distances;
      ScaleNarrow();
      break;
  }
}

// Scaled such that n of the largest distances stay below 2^62 in sum.
void SumRows::FillWide(const double* const* distances) {
  double largest = 0;
  for (int i = 0; i < n_; ++i) {
    for (int j = 0; j < n_; ++j) {
      if (i != j) largest = std::max(largest, std::fabs(distances[i][j]));
    }
  }
  const int scale = 62 - Exponent(n_ * largest);
  unit_ = std::ldexp(1.0, -scale);
  for (int i = 0; i < n_; ++i) {
    std::int64_t* const row = Wide(i);
    for (int j = 0; j < n_; ++j) {
      row[j] = i == j ? 0 : std::llrint(std::ldexp(distances[i][j], scale));
    }
  }
}

// Scaled such that no sum of distances of one row, each off by half a unit, reaches 2^31.
void SumRows::ScaleNarrow() {
  constexpr double kRounding = 1 + 1e-3;  // more than a million halves of a unit
  double largest = 0;
  for (int i = 0; i < n_; ++i) {
    double sum = 0;
    for (int j = 0; j < n_; ++j) sum += std::fabs(distances_[i][j]);
    largest = std::max(largest, sum);
  }
  const int scale = std::min(31 - Exponent(largest * kRounding), 1000);
  unit_ = std::ldexp(1.0, -scale);
  scale_ = std::ldexp(1.0, scale);
}

void SumRows::Add(int left, int right, int node) {
  const std::size_t columns = Index(n_);
  if (distances_ == nullptr) return add_wide_(Wide(left), Wide(right), Wide(node), columns);
  std::int32_t* __restrict const sum = Narrow(node);
  With(left, [&](const auto& one) {
    With(right, [&](const auto& other) {
      for (int leaf = 0; leaf < n_; ++leaf) {
        sum[leaf] = static_cast<std::int32_t>(one(leaf) + other(leaf));
      }
    });
  });
}

}  // namespace zorvek
