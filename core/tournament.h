// A tournament over a fixed number of doubles: the place of the largest, the earliest of equal
// ones.
#ifndef ZORVEK_CORE_TOURNAMENT_H
#define ZORVEK_CORE_TOURNAMENT_H

#include <cstddef>
#include <limits>
#include <vector>

namespace zorvek {

// A complete binary tree over the places, in heap order: winner_[1] is the final, winner_[i] is
// played between winner_[2i] and winner_[2i+1], and the places themselves stand at
// first_..2*first_-1.
class Tournament {
 public:
  static constexpr double kAbsent = -std::numeric_limits<double>::infinity();

  // All places absent.
  explicit Tournament(int places) {
    while (first_ < static_cast<std::size_t>(places)) first_ *= 2;
    value_.assign(first_, kAbsent);
    winner_.resize(2 * first_);
    for (std::size_t place = 0; place < first_; ++place)
      winner_[first_ + place] = static_cast<int>(place);
    for (std::size_t match = first_ - 1; match > 0; --match) winner_[match] = winner_[2 * match];
  }

  // Cost: log2 of the number of places at most.
  void Set(int place, double value) {
    value_[static_cast<std::size_t>(place)] = value;
    for (std::size_t match = (first_ + static_cast<std::size_t>(place)) / 2; match > 0;
         match /= 2) {
      const int earlier = winner_[2 * match];
      const int later = winner_[2 * match + 1];
      const int winner = Value(later) > Value(earlier) ? later : earlier;
      if (winner == winner_[match] && winner != place) return;  // nothing above sees this place
      winner_[match] = winner;
    }
  }

  int Winner() const { return winner_[1]; }
  double Value(int place) const { return value_[static_cast<std::size_t>(place)]; }

 private:
  std::size_t first_ = 1;  // a power of two
  std::vector<double> value_;
  std::vector<int> winner_;
};

}  // namespace zorvek

#endif
