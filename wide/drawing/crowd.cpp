#include "wide/drawing/crowd.h"

#include <algorithm>
#include <cmath>

#include "core/index.h"

namespace zorvek::wide {

namespace {

constexpr double kLeastSquare = 32;   // twice the size of a text
constexpr double kMostSquares = 2e6;  // that bars are entered in, about

double Length(const Bar& bar) {
  return std::hypot(bar.b.x - bar.a.x, bar.b.y - bar.a.y);
}

// Narrows the part from..to (0..1) of a line in which start + t * step lies within -most..most.
void Clip(double start, double step, double most, double& from, double& to) {
  if (step == 0) {
    if (std::abs(start) > most) to = -1;
    return;
  }
  const double one = (-most - start) / step;
  const double other = (most - start) / step;
  from = std::max(from, std::min(one, other));
  to = std::min(to, std::max(one, other));
}

// Whether the line of `bar` comes into the rectangle of `text`, widened by the half of the bar.
bool Covers(const Bar& text, const Bar& bar) {
  const double length = std::max(Length(text), 1e-9);
  const double cosine = (text.b.x - text.a.x) / length;
  const double sine = (text.b.y - text.a.y) / length;
  const Point middle{(text.a.x + text.b.x) / 2, (text.a.y + text.b.y) / 2};
  const auto turned = [&](Point p) {
    const Point arm{p.x - middle.x, p.y - middle.y};
    return Point{arm.x * cosine + arm.y * sine, arm.y * cosine - arm.x * sine};
  };
  const Point a = turned(bar.a);
  const Point b = turned(bar.b);
  double from = 0;
  double to = 1;
  Clip(a.x, b.x - a.x, length / 2 + bar.half, from, to);
  Clip(a.y, b.y - a.y, text.half + bar.half, from, to);
  return from <= to;
}

}  // namespace

Crowd::Crowd(const std::vector<Bar>& bars) {
  double total = 0;
  for (const Bar& bar : bars) total += Length(bar);
  square_ = std::max(kLeastSquare, total / kMostSquares);
  for (const Bar& bar : bars) Add(bar);
}

template <typename Visit>
void Crowd::Near(const Bar& bar, Visit visit) const {
  const int steps = static_cast<int>(Length(bar) / square_) + 1;
  std::uint64_t last = 0;
  for (int k = 0; k <= steps; ++k) {
    const double share = static_cast<double>(k) / steps;
    const auto column = std::lround((bar.a.x + share * (bar.b.x - bar.a.x)) / square_);
    const auto row = std::lround((bar.a.y + share * (bar.b.y - bar.a.y)) / square_);
    const std::uint64_t square =
        static_cast<std::uint64_t>(column) << 32 ^ (static_cast<std::uint64_t>(row) & 0xFFFFFFFF);
    if (k == 0 || square != last) visit(square);
    last = square;
  }
}

void Crowd::Add(const Bar& bar) {
  Near(bar, [&](std::uint64_t square) { near_[square].push_back(bars_.size()); });
  bars_.push_back(bar);
}

// Steps along a bar are no longer than a square, so that what a text covers has a step in a square
// beside one of the text's.
bool Crowd::Place(const Bar& text) {
  bool free = true;
  Near(text, [&](std::uint64_t square) {
    for (int side = 0; side < 9 && free; ++side) {
      const std::uint64_t column = (square >> 32) + Index(side % 3) - 1;
      const std::uint64_t row = (square + Index(side / 3) - 1) & 0xFFFFFFFF;
      const auto found = near_.find(column << 32 ^ row);
      if (found == near_.end()) continue;
      free = std::none_of(found->second.begin(), found->second.end(),
                          [&](std::size_t k) { return Covers(text, bars_[k]); });
    }
  });
  if (free) Add(text);
  return free;
}

}  // namespace zorvek::wide
