// The distances of a run of zorvek-wide, with the taxa they belong to.
#ifndef ZORVEK_WIDE_DATA_DISTANCE_MATRIX_H
#define ZORVEK_WIDE_DATA_DISTANCE_MATRIX_H

#include <string>
#include <utility>
#include <vector>

namespace zorvek::wide {

// n x n distances, symmetric, the diagonal 0. A pair that has no distance holds NaN.
class DistanceMatrix {
 public:
  explicit DistanceMatrix(int n);
  DistanceMatrix(DistanceMatrix&&) = default;  // rows point into the values, so there is no copying
  DistanceMatrix& operator=(DistanceMatrix&&) = default;

  int Size() const { return static_cast<int>(rows_.size()); }
  double operator()(int i, int j) const { return rows_[static_cast<std::size_t>(i)][j]; }
  void Set(int i, int j, double distance);

  // A row to fill in; whoever does so keeps the matrix symmetric.
  double* Row(int i) { return rows_[static_cast<std::size_t>(i)]; }

  // Copies the half below the diagonal (`lower`), or else the one above it, to the other.
  void Mirror(bool lower);

  const double* const* Rows() const { return rows_.data(); }

  // The pairs i < j without a distance.  Cost: n^2.
  std::vector<std::pair<int, int>> Undefined() const;

  // Puts taxon order[k] in place k.  Cost: n^2, and memory for n numbers more.
  void Reorder(const std::vector<int>& order);

  // Without the taxa for which `left_out` is true.
  DistanceMatrix Without(const std::vector<bool>& left_out) const;

 private:
  std::vector<double> values_;  // row-major
  std::vector<double*> rows_;
};

}  // namespace zorvek::wide

#endif
