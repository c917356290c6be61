// The pairs of taxa in an order that is easy on the caches, shared by threads.
#ifndef ZORVEK_WIDE_DISTANCE_TILES_H
#define ZORVEK_WIDE_DISTANCE_TILES_H

#include <algorithm>
#include <functional>

#include "core/parallel.h"

namespace zorvek::wide {

constexpr int kTileRows = 16;
constexpr int kTileColumns = 64;

// Is told, on the calling thread, the share of the pairs that are done, 0..1; may be empty.
using TellShare = std::function<void(double)>;

inline void TellBand(int band, int n, int thread, const TellShare& tell) {
  if (thread != 0 || !tell) return;
  const double left = 1 - static_cast<double>(band * kTileRows) / n;
  tell(1 - left * left);
}

// Calls work(i, from, to), to - from being at most kTileColumns, until every pair i < j of 0..n-1 was
// in one such stretch of a row. The stretches of 16 rows follow each other over the same columns.
template <typename Work>
void ForEachStretch(int n, int threads, const TellShare& tell, const Work& work) {
  ForEach((n + kTileRows - 1) / kTileRows, threads, [&](int band, int thread) {
    TellBand(band, n, thread, tell);
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
