// A sum of non-negative doubles that is always added from left to right, and never from scratch.
//
// Rounded addition is not associative, so changing one term in the middle seems to force all later
// additions to be made again. It does not: while the running total s stays within one binade
// [2^e, 2^(e+1)), it is a whole number of units u = 2^(e-52), and s + x rounds to s plus a whole
// number of units that depends on x and, when x lies halfway between two of them, on whether s is
// odd (ties go to even). So what a block of terms adds depends only on the binade and the parity of
// s at its entry. Each block remembers that amount for either parity; a total within one binade is
// then one addition a block:
//
//   terms   x x x x | x x x x | x x x x | ...
//   entry   s0        s1        s2            s1 = s0 + amount[binade of s0][parity of s0], exactly
//
// The result is the same double, bit for bit, as that of the plain loop.
#ifndef ZORVEK_CORE_ORDERED_SUM_H
#define ZORVEK_CORE_ORDERED_SUM_H

#include <array>
#include <cstdint>
#include <vector>

namespace zorvek {

class OrderedSum {
 public:
  // A sum of `terms` zeros.
  explicit OrderedSum(int terms);

  // Sets one term. Requires: value >= 0, finite. Cost: constant.
  void Set(int term, double value);

  // ((x0 + x1) + x2) + ...  Cost: one addition a block behind the first changed one, one addition a
  // term in a changed block.
  double Total();

 private:
  static constexpr int kBlock = 32;  // terms
  static constexpr std::uint64_t kUnknown = ~std::uint64_t{0};

  // What a block adds to totals of one binade and parity.
  struct Amount {
    std::uint64_t binade = kUnknown;  // exponent bits of the total at entry
    double sum = 0;
  };

  double Fold(int block, double total) const;

  std::vector<double> terms_;                   // padded with zeros to whole blocks
  std::vector<std::array<Amount, 2>> amounts_;  // per block: for even and odd totals
  std::vector<double> entry_;                   // per block, and one more: the total before it
  int valid_ = 0;                               // entry_[0..valid_] hold for the present terms
};

}  // namespace zorvek

#endif
