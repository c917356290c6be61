// Which taxa to leave out, so that every pair that is left has a distance.
#ifndef ZORVEK_WIDE_DISTANCE_VERTEX_COVER_H
#define ZORVEK_WIDE_DISTANCE_VERTEX_COVER_H

#include <utility>
#include <vector>

namespace zorvek::wide {

struct VertexCover {
  std::vector<int> vertices;  // increasing
  bool smallest = true;       // proved to be so
};

// A set of vertices, out of 0..n-1, that every edge has an end in: the smallest one, unless the
// search for it gets too long; then the smallest one found.
VertexCover FindVertexCover(int n, const std::vector<std::pair<int, int>>& edges);

}  // namespace zorvek::wide

#endif
