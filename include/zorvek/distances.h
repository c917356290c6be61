// Distances between taxa, and their estimation from aligned sequences.
#ifndef ZORVEK_DISTANCES_H
#define ZORVEK_DISTANCES_H

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "zorvek/alignment.h"
#include "zorvek/names.h"

namespace zorvek::wide {

// Sums over the pairs of many taxa are finite up to this distance.
constexpr double kMostDistance = 1e300;

// n x n distances, symmetric, the diagonal 0. A pair that has no distance holds NaN.
class DistanceMatrix {
 public:
  explicit DistanceMatrix(int n);
  DistanceMatrix(DistanceMatrix&&) = default;  // rows point into the values, so there is no copying
  DistanceMatrix& operator=(DistanceMatrix&&) = default;

  int Size() const { return static_cast<int>(rows_.size()); }
  double operator()(int i, int j) const { return rows_[static_cast<std::size_t>(i)][j]; }
  void Set(int i, int j, double distance);

  // A row to fill in; whoever does so keeps the matrix symmetric.
  double* Row(int i) { return rows_[static_cast<std::size_t>(i)]; }

  // Copies the half below the diagonal (`lower`), or else the one above it, to the other.
  void Mirror(bool lower);

  const double* const* Rows() const { return rows_.data(); }

  // The pairs i < j without a distance.  Cost: n^2.
  std::vector<std::pair<int, int>> Undefined() const;

  // Puts taxon order[k] in place k.  Cost: n^2, and memory for n numbers more.
  void Reorder(const std::vector<int>& order);

  // Without the taxa for which `left_out` is true.
  DistanceMatrix Without(const std::vector<bool>& left_out) const;

 private:
  std::unique_ptr<double[], void (*)(void*)> values_;  // row-major
  std::vector<double*> rows_;
};

// Models of nucleotide substitution: from what two sequences differ in to their distance.
//
// All but kSpectral are symmetric, take definite nucleotides alone and, kP apart, give expected
// substitutions per site. With differing rates among sites, gamma-distributed with the shape s, the
// models that have the form replace -ln(w) by s (w^(-1/s) - 1).
enum class Model { kP, kJc69, kK80, kF81, kF84, kTn93, kLogdet, kSpectral };

Names<Model> ModelNames();

// Whether the model has a form for rates that differ among sites.
bool HasGamma(Model model);

// The names of those that do, blanks between them.
std::string GammaModels();

struct ModelSettings {
  Model model = Model::kTn93;
  double gamma = 0;  // the shape of the rates among sites; 0: all sites are alike
};

struct PairKinds {
  long finite = 0;      // pairs with a distance of their own
  long saturated = 0;   // pairs with the stand-in
  double largest = 0;   // of the finite distances
  double stand_in = 1;  // of the saturated pairs
};

struct EstimatedDistances {
  DistanceMatrix matrix;
  PairKinds kinds;
};

// The distances of the taxa of an alignment, the frequencies of nucleotides being those of all of them. A
// pair without a compared site has no distance, NaN, as under kSpectral one whose spectrum is unstable.
// `on_progress` is told the share of the pairs that are done, 0..1, on the thread that called.
// Cost: n x sites + n^2 / 2 x (sites / 64 + one formula), shared by the threads.
EstimatedDistances EstimateDistances(const Alignment& alignment, const ModelSettings& settings = {},
                                     int threads = 1,
                                     const std::function<void(double)>& on_progress = {});

}  // namespace zorvek::wide

#endif
