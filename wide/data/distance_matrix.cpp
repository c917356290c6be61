#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "core/index.h"
#include "core/large_table.h"
#include "zorvek/distances.h"

namespace zorvek::wide {

DistanceMatrix::DistanceMatrix(int n)
    : values_(MakeLargeTable<double>(Index(n) * Index(n)).release(), std::free) {
  for (int i = 0; i < n; ++i) rows_.push_back(&values_[Index(i) * Index(n)]);
  std::fill_n(values_.get(), Index(n) * Index(n), 0.0);
}

void DistanceMatrix::Set(int i, int j, double distance) {
  rows_[Index(i)][j] = distance;
  rows_[Index(j)][i] = distance;
}

// In tiles, so that the rows of one half and the columns of the other stay in the cache.
void DistanceMatrix::Mirror(bool lower) {
  constexpr int kTile = 32;
  for (int rows = 0; rows < Size(); rows += kTile) {
    for (int columns = 0; columns <= rows; columns += kTile) {
      for (int i = rows; i < std::min(rows + kTile, Size()); ++i) {
        for (int j = columns; j < std::min(columns + kTile, i); ++j) {
          (lower ? Row(j)[i] : Row(i)[j]) = lower ? Row(i)[j] : Row(j)[i];
        }
      }
    }
  }
}

std::vector<std::pair<int, int>> DistanceMatrix::Undefined() const {
  std::vector<std::pair<int, int>> pairs;
  for (int i = 0; i < Size(); ++i) {
    for (int j = i + 1; j < Size(); ++j) {
      if (std::isnan((*this)(i, j))) pairs.emplace_back(i, j);
    }
  }
  return pairs;
}

void DistanceMatrix::Reorder(const std::vector<int>& order) {
  std::vector<double*> rows;
  std::vector<double> before(rows_.size());
  for (const int taxon : order) {
    double* const row = rows_[Index(taxon)];
    std::copy_n(row, before.size(), before.begin());
    for (std::size_t k = 0; k < order.size(); ++k) row[k] = before[Index(order[k])];
    rows.push_back(row);
  }
  rows_ = std::move(rows);
}

DistanceMatrix DistanceMatrix::Without(const std::vector<bool>& left_out) const {
  std::vector<int> kept;
  for (int i = 0; i < Size(); ++i) {
    if (!left_out[Index(i)]) kept.push_back(i);
  }
  const int count = static_cast<int>(kept.size());
  DistanceMatrix rest(count);
  for (int i = 0; i < count; ++i) {
    for (int j = 0; j < i; ++j) {
      rest.Set(i, j, (*this)(kept[Index(i)], kept[Index(j)]));
    }
  }
  return rest;
}

}  // namespace zorvek::wide
