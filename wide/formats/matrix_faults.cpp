#include "wide/formats/matrix_faults.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "wide/formats/numbers.h"
#include "zorvek/check.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

constexpr double kRounding = 1e-5;

// Calls visit(i, j) for all j <= i, in squares that the cache holds.
template <typename Visit>
void ForPairs(std::size_t n, const Visit& visit) {
  constexpr std::size_t kSide = 32;
  for (std::size_t top = 0; top < n; top += kSide) {
    for (std::size_t left = 0; left <= top; left += kSide) {
      for (std::size_t i = top; i < std::min(top + kSide, n); ++i) {
        for (std::size_t j = left; j < std::min(left + kSide, i + 1); ++j) visit(i, j);
      }
    }
  }
}

// Symmetric, nothing but distances, and 0 from a taxon to itself.
template <typename Number>
bool IsSound(std::size_t n, const Number* const* distances) {
  bool sound = true;
  ForPairs(n, [&](std::size_t i, std::size_t j) {
    const Number a = distances[i][j];
    sound &= a == distances[j][i] && IsDistance(a);
    sound &= i != j || a == 0;
  });
  return sound;
}

}  // namespace

bool SameButForRounding(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
  return std::abs(a - b) <= kRounding * std::max({std::abs(a), std::abs(b), 1.0});
}

std::string NotToItself(double distance, const std::string& label) {
  return "distance " + Shortest(distance) + " of " + label + " to itself; write 0";
}

std::string NotADistance(double distance, const std::string& of) {
  return "distance " + Shortest(distance) + of +
         (distance > 0 ? "; write a number of 1e300 at most, or NA for none"
                       : "; write a number that is 0 or more, or NA for none");
}

std::string NotTheSame(double distance, const std::string& of, double other) {
  return "distance " + Shortest(distance) + of + ", but " + Shortest(other) +
         " the other way; make them the same";
}

template <typename Number>
bool CheckNumbers(const std::string& file, const std::vector<std::string>& labels,
                  const Number* const* distances) {
  if (IsSound(labels.size(), distances)) return true;
  FaultList faults(file);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    const double self = distances[i][i];
    if (self != 0 && !std::isnan(self)) faults.Add(0, 0, NotToItself(self, labels[i]));
    for (std::size_t j = 0; j < i; ++j) {
      const double a = distances[i][j], b = distances[j][i];
      const std::string of = " of " + labels[i] + " to " + labels[j];
      if (!IsDistance(a) || !IsDistance(b)) {
        faults.Add(0, 0, NotADistance(IsDistance(a) ? b : a, of));
      } else if (!SameButForRounding(a, b)) {
        faults.Add(0, 0, NotTheSame(a, of, b));
      }
    }
  }
  faults.ThrowIfAny();
  return false;
}

template bool CheckNumbers(const std::string&, const std::vector<std::string>&,
                           const double* const*);
template bool CheckNumbers(const std::string&, const std::vector<std::string>&,
                           const float* const*);

template <typename Number>
void Symmetrise(int n, Number* const* distances) {
  ForPairs(static_cast<std::size_t>(n), [&](std::size_t i, std::size_t j) {
    distances[i][j] = distances[j][i] = i == j ? 0 : (distances[i][j] + distances[j][i]) / 2;
  });
}

template void Symmetrise(int, double* const*);
template void Symmetrise(int, float* const*);

}  // namespace zorvek::wide
