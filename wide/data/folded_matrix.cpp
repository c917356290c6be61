// What is above the diagonal stands below it too, so half of the memory is enough for the distances. Of
// each two rows that are as far from the ends, the parts below the diagonal fill one row:
//
//       . d d d d        s s s s s      s: in single precision the rows 0 and 4,
//       a . d d d        s s s s s         1 and 3,
//       b b . d d   ->   b b s s s         and that in the middle, where there is one
//       c c c . d        c c c a .
//       e e e e .        e e e e .
#include "wide/data/folded_matrix.h"

#include <algorithm>
#include <cstring>

#include "core/index.h"
#include "core/parallel.h"

namespace zorvek::wide {

FoldedMatrix::FoldedMatrix(DistanceMatrix& matrix, int threads)
    : matrix_(matrix), single_(Index(matrix.Size())) {
  const int n = matrix.Size();
  const std::size_t bytes = Index(n) * sizeof(float);
  ForEach((n + 1) / 2, threads, [&](int low, int) {
    const int high = n - 1 - low;
    double* const upper = matrix_.Row(low);
    double* const lower = matrix_.Row(high);
    const std::vector<float> of_low(upper, upper + n), of_high(lower, lower + n);
    double* const kept = low < high ? upper : upper + low;
    if (low < high) std::copy_n(upper, low, lower + high);
    std::memcpy(kept, of_low.data(), bytes);
    single_[Index(low)] = reinterpret_cast<float*>(kept);
    if (low == high) return;
    single_[Index(high)] = single_[Index(low)] + n;
    std::memcpy(single_[Index(high)], of_high.data(), bytes);
  });
}

FoldedMatrix::~FoldedMatrix() {
  const int n = matrix_.Size();
  for (int low = 0; low < n; ++low) {
    const int high = n - 1 - low;
    double* const row = matrix_.Row(low);
    if (low < high) std::memcpy(row, matrix_.Row(high) + high, Index(low) * sizeof(double));
    row[low] = 0;
  }
  matrix_.Mirror(true);
}

}  // namespace zorvek::wide
