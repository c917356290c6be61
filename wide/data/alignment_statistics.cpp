#include "wide/data/alignment_statistics.h"

#include <algorithm>
#include <string_view>
#include <unordered_map>

namespace zorvek::wide {

namespace {

bool HasTwo(StateSet states) {
  return (states & (states - 1)) != 0;
}

void CountSites(const Alignment& alignment, AlignmentStatistics& statistics) {
  // Of each site the nucleotides that were seen, and those that were seen again.
  std::vector<StateSet> once(alignment.Sites());
  std::vector<StateSet> twice(alignment.Sites());
  for (const std::vector<StateSet>& row : alignment.cells) {
    AlignmentStatistics::Sequence sequence;
    for (std::size_t site = 0; site < row.size(); ++site) {
      const StateSet states = row[site];
      if (states == kNoState) ++sequence.gaps;
      if (HasTwo(states)) {
        ++sequence.ambiguous;
        continue;
      }
      twice[site] = static_cast<StateSet>(twice[site] | (once[site] & states));
      once[site] = static_cast<StateSet>(once[site] | states);
    }
    statistics.sequences.push_back(sequence);
  }
  const auto count = [](const std::vector<StateSet>& sites) {
    return static_cast<std::size_t>(std::count_if(sites.begin(), sites.end(), HasTwo));
  };
  statistics.variable = count(once);
  statistics.informative = count(twice);
}

std::vector<std::vector<std::size_t>> IdenticalSequences(const Alignment& alignment) {
  std::unordered_map<std::string_view, std::size_t> group_of;
  std::vector<std::vector<std::size_t>> groups;
  for (std::size_t taxon = 0; taxon < alignment.Taxa(); ++taxon) {
    const std::vector<StateSet>& row = alignment.cells[taxon];
    const std::string_view symbols(reinterpret_cast<const char*>(row.data()), row.size());
    const std::size_t group = group_of.try_emplace(symbols, groups.size()).first->second;
    if (group == groups.size()) groups.emplace_back();
    groups[group].push_back(taxon);
  }
  const auto alone = [](const auto& group) { return group.size() < 2; };
  groups.erase(std::remove_if(groups.begin(), groups.end(), alone), groups.end());
  return groups;
}

}  // namespace

AlignmentStatistics StatisticsOf(const Alignment& alignment) {
  AlignmentStatistics statistics;
  CountSites(alignment, statistics);
  statistics.identical = IdenticalSequences(alignment);
  return statistics;
}

}  // namespace zorvek::wide
