// The pairs of taxa in an order that is easy on the caches, shared by threads.
#ifndef ZORVEK_WIDE_DISTANCE_TILES_H
#define ZORVEK_WIDE_DISTANCE_TILES_H

#include <algorithm>

#include "core/parallel.h"

namespace zorvek::wide {

constexpr int kTileRows = 16;
constexpr int kTileColumns = 64;

// Calls work(i, from, to), to - from being at most kTileColumns, until every pair i < j of 0..n-1 was
// in one such stretch of a row. The stretches of 16 rows follow each other over the same columns.
template <typename Work>
void ForEachStretch(int n, int threads, const Work& work) {
  ForEach((n + kTileRows - 1) / kTileRows, threads, [&](int band, int) {
    const int first = band * kTileRows;
    const int last = std::min(first + kTileRows, n);
    for (int column = first + 1; column < n; column += kTileColumns) {
      for (int i = first; i < last; ++i) {
        const int from = std::max(column, i + 1);
        const int to = std::min(column + kTileColumns, n);
        if (from < to) work(i, from, to);
      }
    }
  });
}

}  // namespace zorvek::wide

#endif
