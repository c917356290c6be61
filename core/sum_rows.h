// The rows that SubtreeSums is made of: per node, a fixed-point sum of distances for each leaf.
//
//   kDouble   64 bits a sum.           n leaf rows, copied from the distances     16 n^2 bytes
//             n - 2 rows of inner nodes
//   kSingle   32 bits a sum.           leaf rows rounded from the distances        4 n^2 bytes
//             n - 2 rows of inner nodes  whenever they are read
//
// Either way sums are whole numbers of units, and exact. In 32 bits a unit is 2^-30 to 2^-31 of the largest
// row sum of the distances: of 20,000 distances of 0.4 on average some 5e-6, and rounding is half of that.
#ifndef ZORVEK_CORE_SUM_ROWS_H
#define ZORVEK_CORE_SUM_ROWS_H

#include <cmath>
#include <cstddef>
#include <cstdint>

#include "core/index.h"
#include "core/large_table.h"

namespace zorvek {

enum class Precision { kDouble, kSingle };

class SumRows {
 public:
  // Rows for a rooted tree of n leaves, those of its leaves filled in.
  // Requires: n >= 4; a symmetric matrix of finite numbers. In single precision the matrix outlives this,
  // and its diagonal is 0; else that is not read.  Cost: n^2.
  SumRows(int n, const double* const* distances, Precision precision);

  // The value of one fixed-point unit, a power of two.
  double Unit() const { return unit_; }

  // Makes the row of `node` the sum of two others.  Cost: n.
  void Add(int left, int right, int node);

  // Calls use(row), where row(leaf) is a number of the row of a node.
  template <typename Use>
  auto With(int node, const Use& use) const {
    if (distances_ == nullptr) {
      return use([row = Wide(node)](int leaf) { return row[leaf]; });
    }
    if (node >= n_) return use([row = Narrow(node)](int leaf) { return std::int64_t{row[leaf]}; });
    return use([row = distances_[node], scale = scale_](int leaf) {
      return std::int64_t{Rounded(row[leaf] * scale)};
    });
  }

  std::int64_t At(int node, int leaf) const {
    return With(node, [leaf](const auto& row) { return row(leaf); });
  }

 private:
  void FillWide(const double* const* distances);
  void ScaleNarrow();

  static std::int32_t Rounded(double units) {
    return static_cast<std::int32_t>(units + std::copysign(0.5, units));
  }

  std::int64_t* Wide(int node) const { return wide_.get() + Index(node) * Index(n_); }
  std::int32_t* Narrow(int node) const { return narrow_.get() + Index(node - n_) * Index(n_); }

  int n_;
  double unit_ = 1, scale_ = 1;               // scale_ = 1 / unit_
  const double* const* distances_ = nullptr;  // in single precision
  LargeTable<std::int64_t> wide_;
  LargeTable<std::int32_t> narrow_;
  void (*add_wide_)(const std::int64_t*, const std::int64_t*, std::int64_t*, std::size_t);
};

}  // namespace zorvek

#endif
