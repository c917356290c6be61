// The registry of models: a row and a formula each.
#ifndef ZORVEK_WIDE_DISTANCE_MODELS_H
#define ZORVEK_WIDE_DISTANCE_MODELS_H

#include <array>
#include <functional>

#include "core/pair_table.h"
#include "zorvek/distances.h"

namespace zorvek::wide {

constexpr std::size_t kModels = static_cast<std::size_t>(Model::kSpectral) + 1;

// Shares of the nucleotides, which sum to 1.
struct Frequencies {
  double a = 0, c = 0, g = 0, t = 0;
};

// Two sequences over the sites where both have a definite nucleotide.
struct PairCounts {
  double compared = 0;
  double ag = 0, ct = 0;  // transitions
  double transversions = 0;
  PairTable table;  // of the models that need it, instead of the others
};

// The distance of a pair, which has a compared site. What is not finite stands for a pair that is too
// far apart for the model: the argument of a logarithm is not positive.
using Formula = std::function<double(const PairCounts&)>;

// -ln(1 - x), or its form with gamma-distributed rates.
class RateTerm {
 public:
  explicit RateTerm(double gamma) : gamma_(gamma) {}

  // `weight` times that; 0 if the weight is, whatever x may be; infinite if x is not below 1.
  double operator()(double weight, double x) const;

 private:
  double gamma_;
};

struct ModelRow {
  const char* name;   // as users write it
  const char* paper;  // its key in REFERENCES.md
  const char* unit;   // of its distances
  bool has_gamma;
  bool needs_table;
  Formula (*formula)(const Frequencies&, RateTerm);  // none for kSpectral: see spectral.h
};

// All models, in the order of the enumeration.
const std::array<ModelRow, kModels>& Models();

inline const ModelRow& RowOf(Model model) {
  return Models()[static_cast<std::size_t>(model)];
}

}  // namespace zorvek::wide

#endif
