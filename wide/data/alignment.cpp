#include "zorvek/alignment.h"

#include <array>
#include <string_view>

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

}  // namespace

StateSet StatesOf(char symbol) {
  return kStates[static_cast<unsigned char>(symbol)];
}

void Alignment::LeaveOut(const std::vector<bool>& left_out) {
  RemoveItems(left_out, labels);
  RemoveItems(left_out, cells);
}

}  // namespace zorvek::wide
