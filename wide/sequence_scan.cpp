#include "wide/sequence_scan.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "wide/error.h"
#include "wide/labels.h"
#include "wide/words.h"

namespace zorvek::wide {

namespace {

// One-letter codes of nucleotides and of sets of them [NC-IUB1985], X as N, missing and gap.
constexpr std::string_view kSymbols = "ACGTURYMKSWHBVDNXacgturymkswhbvdnx?-";

// Takes sites from lines and notes what cannot be one.
class SiteReader {
 public:
  explicit SiteReader(const std::string& path) : path_(path) {}

  // Appends the sites in `part`, which begins in this line and column.
  void Append(std::string_view part, long line, long column, std::string& symbols) {
    for (const char c : part) {
      if (!IsBlank(c)) symbols += Checked(c, line, column);
      ++column;
    }
  }

  void ThrowIfAny() const { faults_.ThrowIfAny(); }

 private:
  char Checked(char c, long line, long column) {
    if (kSymbols.find(c) == kSymbols.npos) {
      Add(line, column, std::string("'") + c + "' stands for no nucleotide; write a code, ? or -");
      return '?';
    }
    const char other = c == 'U' || c == 'u' ? 'T' : c == 'T' || c == 't' ? 'U' : '\0';
    if (other == kind_ && other != '\0') {
      Add(line, column,
          std::string("'") + c + "' after " + other + "; write one of T and U in the whole file");
    } else if (other != '\0') {
      kind_ = other == 'U' ? 'T' : 'U';
    }
    return c;
  }

  void Add(long line, long column, const std::string& fault) {
    faults_.Add(At(path_, line, column) + ": " + fault);
  }

  std::string path_;
  Faults faults_;
  char kind_ = '\0';  // T or U, once one of them was seen
};

void CheckLabels(const std::string& path, const std::vector<ScannedSequence>& sequences) {
  std::vector<std::string> labels;
  for (const ScannedSequence& sequence : sequences) labels.push_back(sequence.label);
  Faults faults;
  for (const std::vector<std::size_t>& group : Duplicates(labels)) {
    for (const std::size_t i : group) {
      if (i == group[0]) continue;
      faults.Add(At(path, sequences[i].line, 1) + ": label " + labels[i] + " stands in line " +
                 std::to_string(sequences[group[0]].line) + " already; give each taxon its own");
    }
  }
  faults.ThrowIfAny();
}

void CheckLengths(const std::string& path, const std::vector<ScannedSequence>& sequences,
                  std::size_t sites, const std::string& whose) {
  Faults faults;
  for (const ScannedSequence& sequence : sequences) {
    if (sequence.symbols.size() == sites) continue;
    faults.Add(At(path, sequence.line, 1) + ": " + sequence.label + " has " +
               std::to_string(sequence.symbols.size()) + " sites, not the " +
               std::to_string(sites) + whose + "; align the sequences to one length");
  }
  faults.ThrowIfAny();
}

// A line that is not blank.
struct Line {
  long number;
  std::string_view text;
};

std::vector<Line> LinesWithText(std::string_view text) {
  std::vector<Line> found;
  Lines lines(text);
  for (std::string_view line; lines.Next(line);) {
    if (!std::all_of(line.begin(), line.end(), IsBlank)) found.push_back({lines.Number(), line});
  }
  return found;
}

// Starts a sequence with the line's first word as its label, then the sites of the rest.
ScannedSequence BeginSequence(const Line& line, SiteReader& sites) {
  const Word label = Words(line.text).Next();
  const auto end =
      static_cast<std::size_t>(label.text.data() - line.text.data()) + label.text.size();
  ScannedSequence sequence{std::string(label.text), line.number, {}};
  sites.Append(line.text.substr(end), line.number, static_cast<long>(end) + 1, sequence.symbols);
  return sequence;
}

struct PhylipFile {
  std::string path;
  std::size_t taxa = 0;
  std::size_t sites = 0;
  std::vector<Line> lines;  // after the first
};

// Whether the lines are blocks of one line a taxon, labels in the first block: its lines then hold
// equally many sites, and not all.
bool LooksInterleaved(const PhylipFile& file) {
  if (file.lines.size() <= file.taxa) return false;
  SiteReader ignored(file.path);
  const std::size_t first = BeginSequence(file.lines[0], ignored).symbols.size();
  if (first == 0 || first >= file.sites) return false;
  return std::all_of(
      file.lines.begin(), file.lines.begin() + static_cast<long>(file.taxa),
      [&](const Line& line) { return BeginSequence(line, ignored).symbols.size() == first; });
}

// The later blocks may have the labels too, or not.
std::vector<ScannedSequence> InBlocks(const PhylipFile& file, SiteReader& sites) {
  std::vector<ScannedSequence> sequences;
  for (std::size_t k = 0; k < file.lines.size(); ++k) {
    const Line& line = file.lines[k];
    if (k < file.taxa) {
      sequences.push_back(BeginSequence(line, sites));
      continue;
    }
    ScannedSequence& sequence = sequences[k % file.taxa];
    if (Words(line.text).Next().text == sequence.label) {
      sequence.symbols += BeginSequence(line, sites).symbols;
    } else {
      sites.Append(line.text, line.number, 1, sequence.symbols);
    }
  }
  return sequences;
}

// One after the other. A file of one line a taxon is taken line by line, so that one wrong length
// does not shift all that follows.
std::vector<ScannedSequence> InTurn(const PhylipFile& file, SiteReader& sites) {
  const bool line_each = file.lines.size() == file.taxa;
  std::vector<ScannedSequence> sequences;
  for (const Line& line : file.lines) {
    if (line_each || sequences.empty() || sequences.back().symbols.size() >= file.sites) {
      sequences.push_back(BeginSequence(line, sites));
    } else {
      sites.Append(line.text, line.number, 1, sequences.back().symbols);
    }
  }
  return sequences;
}

PhylipFile ReadHeader(const std::string& path, std::string_view text) {
  PhylipFile file{path, 0, 0, LinesWithText(text)};
  const Line header = file.lines.empty() ? Line{1, {}} : file.lines[0];
  Words words(header.text);
  for (std::size_t* number : {&file.taxa, &file.sites}) {
    const std::string_view word = words.Next().text;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), *number);
    if (error == std::errc() && end == word.data() + word.size() && *number > 0) continue;
    throw Error(
        At(path, header.number, 1) +
        ": no numbers of taxa and sites; begin a PHYLIP file with them, and give --matrix for "
        "a distance matrix");
  }
  file.lines.erase(file.lines.begin());
  return file;
}

}  // namespace

std::vector<ScannedSequence> ScanFasta(const std::string& path, const std::string& text) {
  std::vector<ScannedSequence> sequences;
  SiteReader sites(path);
  Faults shape;
  for (const Line& line : LinesWithText(text)) {
    if (line.text[0] == '>') {
      sequences.push_back({std::string(Words(line.text.substr(1)).Next().text), line.number, {}});
      if (sequences.back().label.empty()) {
        shape.Add(At(path, line.number, 2) + ": no label; write one after the >");
      }
    } else if (sequences.empty()) {
      throw Error(At(path, line.number, 1) + ": text before the first >; begin with > and a label");
    } else {
      sites.Append(line.text, line.number, 1, sequences.back().symbols);
    }
  }
  shape.ThrowIfAny();
  sites.ThrowIfAny();
  CheckLabels(path, sequences);
  if (!sequences.empty()) {
    CheckLengths(path, sequences, sequences[0].symbols.size(), " of " + sequences[0].label);
  }
  return sequences;
}

std::vector<ScannedSequence> ScanPhylip(const std::string& path, const std::string& text) {
  const PhylipFile file = ReadHeader(path, text);
  SiteReader sites(path);
  const std::vector<ScannedSequence> sequences =
      LooksInterleaved(file) ? InBlocks(file, sites) : InTurn(file, sites);
  if (sequences.size() != file.taxa) {
    const long line = file.lines.empty() ? 1 : file.lines.back().number;
    throw Error(At(path, line, 1) + ": " + std::to_string(sequences.size()) +
                " sequences, not the " + std::to_string(file.taxa) +
                " of the first line; fix that line, or sequences that are not " +
                std::to_string(file.sites) + " sites long");
  }
  sites.ThrowIfAny();
  CheckLabels(path, sequences);
  CheckLengths(path, sequences, file.sites, " of the first line");
  return sequences;
}

}  // namespace zorvek::wide
