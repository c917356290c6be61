#include <algorithm>
#include <cmath>

#include "zorvek/distances.h"

namespace zorvek::wide {

DistanceMatrix::DistanceMatrix(int n)
    : values_(static_cast<std::size_t>(n) * static_cast<std::size_t>(n)) {
  for (int i = 0; i < n; ++i) rows_.push_back(values_.data() + static_cast<std::ptrdiff_t>(i) * n);
}

void DistanceMatrix::Set(int i, int j, double distance) {
  rows_[static_cast<std::size_t>(i)][j] = distance;
  rows_[static_cast<std::size_t>(j)][i] = distance;
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
    double* const row = rows_[static_cast<std::size_t>(taxon)];
    std::copy_n(row, before.size(), before.begin());
    for (std::size_t k = 0; k < order.size(); ++k)
      row[k] = before[static_cast<std::size_t>(order[k])];
    rows.push_back(row);
  }
  rows_ = std::move(rows);
}

DistanceMatrix DistanceMatrix::Without(const std::vector<bool>& left_out) const {
  std::vector<int> kept;
  for (int i = 0; i < Size(); ++i) {
    if (!left_out[static_cast<std::size_t>(i)]) kept.push_back(i);
  }
  const int count = static_cast<int>(kept.size());
  DistanceMatrix rest(count);
  for (int i = 0; i < count; ++i) {
    for (int j = 0; j < i; ++j) {
      rest.Set(i, j, (*this)(kept[static_cast<std::size_t>(i)], kept[static_cast<std::size_t>(j)]));
    }
  }
  return rest;
}

}  // namespace zorvek::wide
