#include "zorvek/alignment.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <string_view>

#include "core/index.h"
#include "wide/data/ascii.h"

namespace zorvek::wide {

namespace {

constexpr std::array<StateSet, 256> MakeStates() {
  std::array<StateSet, 256> states{};
  for (StateSet& set : states) set = kNotASite;
  constexpr std::string_view kCodes = "-ACMGRSVTWYHKDBN";  // the code of each set
  for (std::size_t set = 0; set < kCodes.size(); ++set) {
    states[static_cast<unsigned char>(kCodes[set])] = static_cast<StateSet>(set);
    states[static_cast<unsigned char>(ToLower(kCodes[set]))] = static_cast<StateSet>(set);
  }
  states['U'] = states['u'] = kT;
  states['X'] = states['x'] = kAnyState;
  states['?'] = kNoState;
  return states;
}

constexpr std::array<StateSet, 256> kStates = MakeStates();

// Sites where it is not told which nucleotide is there come before A, C, G and T.
bool LessInDefinite(const std::vector<StateSet>& a, const std::vector<StateSet>& b) {
  const auto definite = [](StateSet states) { return (states & (states - 1)) == 0 ? states : 0; };
  return std::lexicographical_compare(
      a.begin(), a.end(), b.begin(), b.end(),
      [&](StateSet x, StateSet y) { return definite(x) < definite(y); });
}

}  // namespace

StateSet StatesOf(char symbol) {
  return kStates[static_cast<unsigned char>(symbol)];
}

void Alignment::LeaveOut(const std::vector<bool>& left_out) {
  RemoveItems(left_out, labels);
  RemoveItems(left_out, cells);
}

void Alignment::Reorder(const std::vector<int>& order) {
  Alignment before = std::move(*this);
  labels.clear();
  cells.clear();
  rna = before.rna;
  for (const int taxon : order) {
    labels.push_back(std::move(before.labels[Index(taxon)]));
    cells.push_back(std::move(before.cells[Index(taxon)]));
  }
}

std::vector<int> CanonicalOrder(const Alignment& alignment) {
  std::vector<int> order(alignment.Taxa());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&](int a, int b) {
    const auto& first = alignment.cells[Index(a)];
    const auto& second = alignment.cells[Index(b)];
    if (LessInDefinite(first, second)) return true;
    return !LessInDefinite(second, first) &&
           alignment.labels[Index(a)] < alignment.labels[Index(b)];
  });
  return order;
}

}  // namespace zorvek::wide
