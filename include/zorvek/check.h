// What is checked of taxa and their distances before a search. All of these throw Error, with `file` in
// front of what is wrong unless it is empty.
#ifndef ZORVEK_CHECK_H
#define ZORVEK_CHECK_H

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "zorvek/distances.h"

namespace zorvek::wide {

// The labels that are blank, or belong to several taxa, are faults. NEXUS tells neither upper from lower
// case nor a blank from an underscore, so such labels are the same.  Cost: n log n.
void CheckLabels(const std::string& file, const std::vector<std::string>& labels);

// Fewer taxa than a tree needs are a fault; `left` says whether some were left out.
void CheckNumberOfTaxa(const std::string& file, std::size_t taxa, bool left = false);

// Faults are the numbers of a square matrix that ReadMatrix would not take either: negative ones,
// those above 1e300, distances of a taxon to itself, and pairs whose two numbers differ by more than rounding.
// NaN is none. Returns whether the two numbers of every pair are the same; see Symmetrise if not. Number
// is double or float.  Cost: n^2.
template <typename Number>
bool CheckNumbers(const std::string& file, const std::vector<std::string>& labels,
                  const Number* const* distances);

// Takes the mean of the two numbers of each pair, and 0 from a taxon to itself.  Cost: n^2.
template <typename Number>
void Symmetrise(int n, Number* const* distances);

// The pairs of taxa without a distance, and what to leave out, so that none is left.
struct UndefinedPairs {
  std::vector<std::pair<int, int>> pairs;  // i < j
  std::vector<int> taxa;                   // as few as were found, increasing
  bool fewest = true;                      // proved to be so
};

// Of several ways to leave out equally many taxa, `order`, of all taxa, decides.
// Cost: n^2; with undefined pairs a second or so at the most.
template <typename Number>
UndefinedPairs FindUndefined(const Number* const* distances, const std::vector<int>& order);

// Pairs without a distance are a fault. `remedy` is what to do with the taxa that are then named,
// `model` that of estimated distances, null for others.
void CheckDefined(const std::string& file, const std::vector<std::string>& labels,
                  const UndefinedPairs& undefined, const std::string& remedy,
                  const Model* model = nullptr);

// Estimates of which none is finite are a fault.
void CheckEstimates(const std::string& file, Model model, const PairKinds& kinds);

}  // namespace zorvek::wide

#endif
