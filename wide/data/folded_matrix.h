// The distances of a matrix twice in its own memory: once as they are, once in single precision.
#ifndef ZORVEK_WIDE_DATA_FOLDED_MATRIX_H
#define ZORVEK_WIDE_DATA_FOLDED_MATRIX_H

#include <vector>

#include "zorvek/distances.h"

namespace zorvek::wide {

// While it lives nobody else may use the matrix, which afterwards is as it was.
// Cost: n^2, of which threads share the folding.  Memory: of order n.
class FoldedMatrix {
 public:
  // Requires: the matrix is symmetric, its diagonal 0.
  FoldedMatrix(DistanceMatrix& matrix, int threads);
  ~FoldedMatrix();
  FoldedMatrix(const FoldedMatrix&) = delete;
  FoldedMatrix& operator=(const FoldedMatrix&) = delete;

  // The rows in single precision, which may be changed.
  float* const* Rows() { return single_.data(); }

 private:
  DistanceMatrix& matrix_;
  std::vector<float*> single_;
};

}  // namespace zorvek::wide

#endif
