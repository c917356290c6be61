#include "core/ordered_sum.h"

#include <algorithm>
#include <cstddef>
#include <cstring>

namespace zorvek {

namespace {

std::uint64_t Bits(double value) {
  std::uint64_t bits;
  std::memcpy(&bits, &value, sizeof bits);
  return bits;
}

// The exponent bits of a non-negative double.
std::uint64_t Binade(std::uint64_t bits) {
  return bits >> 52;
}

}  // namespace

OrderedSum::OrderedSum(int terms) {
  const std::size_t blocks = static_cast<std::size_t>((terms + kBlock - 1) / kBlock);
  terms_.resize(blocks * kBlock);
  amounts_.resize(blocks);
  entry_.resize(blocks + 1);
}

void OrderedSum::Set(int term, double value) {
  const int block = term / kBlock;
  terms_[static_cast<std::size_t>(term)] = value;
  amounts_[static_cast<std::size_t>(block)] = {};
  valid_ = std::min(valid_, block);
}

double OrderedSum::Fold(int block, double total) const {
  const double* term = &terms_[static_cast<std::size_t>(block) * kBlock];
  for (int i = 0; i < kBlock; ++i) total += term[i];
  return total;
}

double OrderedSum::Total() {
  const int blocks = static_cast<int>(amounts_.size());
  double total = entry_[static_cast<std::size_t>(valid_)];
  for (int block = valid_; block < blocks; ++block) {
    const std::uint64_t bits = Bits(total);
    Amount& amount = amounts_[static_cast<std::size_t>(block)][bits & 1];
    double after = total + amount.sum;
    if (amount.binade != Binade(bits) || Binade(Bits(after)) != Binade(bits)) {
      after = Fold(block, total);
      amount = Binade(Bits(after)) == Binade(bits) ? Amount{Binade(bits), after - total} : Amount{};
    }
    entry_[static_cast<std::size_t>(block) + 1] = total = after;
  }
  valid_ = blocks;
  return total;
}

}  // namespace zorvek
