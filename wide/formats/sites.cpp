#include "wide/formats/sites.h"

#include <utility>

#include "wide/data/ascii.h"
#include "wide/data/labels.h"

namespace zorvek::wide {

namespace {

void CheckLabels(const std::string& path, const Sequences& sequences) {
  const std::vector<std::string>& labels = sequences.alignment.labels;
  Faults faults;
  for (const std::vector<std::size_t>& group : Duplicates(labels)) {
    for (const std::size_t i : group) {
      if (i == group[0]) continue;
      faults.Add(At(path, sequences.lines[i], 1) + ": label " + labels[i] + " stands in line " +
                 std::to_string(sequences.lines[group[0]]) + " already; give each taxon its own");
    }
  }
  faults.ThrowIfAny();
}

void CheckLengths(const std::string& path, const Sequences& sequences, std::size_t sites,
                  const std::string& whose) {
  Faults faults;
  const Alignment& alignment = sequences.alignment;
  for (std::size_t i = 0; i < alignment.Taxa(); ++i) {
    if (alignment.cells[i].size() == sites) continue;
    faults.Add(At(path, sequences.lines[i], 1) + ": " + alignment.labels[i] + " has " +
               std::to_string(alignment.cells[i].size()) + " sites, not the " +
               std::to_string(sites) + whose + "; align the sequences to one length");
  }
  faults.ThrowIfAny();
}

}  // namespace

void Sequences::Begin(std::string_view label, long line) {
  alignment.labels.emplace_back(label);
  alignment.cells.emplace_back();
  if (alignment.Taxa() > 1) alignment.cells.back().reserve(alignment.Sites());
  lines.push_back(line);
}

void SiteReader::Append(std::string_view part, long line, long column,
                        std::vector<StateSet>& cells) {
  for (const char c : part) {
    const StateSet states = StatesOf(c);
    saw_t_ |= c == 'T' || c == 't';
    saw_u_ |= c == 'U' || c == 'u';
    if (states != kNotASite) {
      cells.push_back(states);
    } else if (!IsBlank(c)) {
      faults_.Add(At(path_, line, column) + ": '" + c +
                  "' stands for no nucleotide; write a code, ? or -");
      cells.push_back(kNoState);
    }
    ++column;
  }
}

Alignment Checked(const std::string& path, Sequences&& sequences, const SiteReader& reader,
                  std::size_t sites, const std::string& whose) {
  reader.ThrowIfAny();
  CheckLabels(path, sequences);
  CheckLengths(path, sequences, sites, whose);
  sequences.alignment.rna = reader.Rna();
  return std::move(sequences.alignment);
}

}  // namespace zorvek::wide
