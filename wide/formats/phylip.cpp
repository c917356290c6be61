#include "wide/formats/phylip.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>
#include <vector>

#include "wide/formats/sites.h"
#include "wide/formats/text.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

// A line that is not blank.
struct Line {
  long number;
  std::string_view text;
};

std::vector<Line> LinesWithText(std::string_view text) {
  std::vector<Line> found;
  Lines lines(text);
  for (std::string_view line; lines.Next(line);) {
    if (!IsBlankLine(line)) found.push_back({lines.Number(), line});
  }
  return found;
}

// The line's first word, which is a label where a sequence begins.
std::string_view Label(const Line& line) {
  return Words(line.text).Next().text;
}

// Appends the sites that stand after the label.
void AppendAfterLabel(const Line& line, SiteReader& sites, std::vector<StateSet>& cells) {
  const std::string_view label = Label(line);
  const auto end = static_cast<std::size_t>(label.data() - line.text.data()) + label.size();
  sites.Append(line.text.substr(end), line.number, static_cast<long>(end) + 1, cells);
}

std::size_t SitesAfterLabel(const Line& line) {
  SiteReader ignored("");
  std::vector<StateSet> cells;
  AppendAfterLabel(line, ignored, cells);
  return cells.size();
}

void BeginSequence(const Line& line, SiteReader& sites, Sequences& sequences) {
  sequences.Begin(Label(line), line.number);
  AppendAfterLabel(line, sites, sequences.alignment.cells.back());
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
  const std::size_t first = SitesAfterLabel(file.lines[0]);
  if (first == 0 || first >= file.sites) return false;
  return std::all_of(file.lines.begin(), file.lines.begin() + static_cast<long>(file.taxa),
                     [&](const Line& line) { return SitesAfterLabel(line) == first; });
}

// The later blocks may have the labels too, or not.
Sequences InBlocks(const PhylipFile& file, SiteReader& sites) {
  Sequences sequences;
  for (std::size_t k = 0; k < file.lines.size(); ++k) {
    const Line& line = file.lines[k];
    const std::size_t taxon = k % file.taxa;
    if (k < file.taxa) {
      BeginSequence(line, sites, sequences);
    } else if (Label(line) == sequences.alignment.labels[taxon]) {
      AppendAfterLabel(line, sites, sequences.alignment.cells[taxon]);
    } else {
      sites.Append(line.text, line.number, 1, sequences.alignment.cells[taxon]);
    }
  }
  return sequences;
}

// One after the other. A file of one line a taxon is taken line by line, so that one wrong length
// does not shift all that follows.
Sequences InTurn(const PhylipFile& file, SiteReader& sites) {
  const bool line_each = file.lines.size() == file.taxa;
  Sequences sequences;
  std::vector<std::vector<StateSet>>& cells = sequences.alignment.cells;
  for (const Line& line : file.lines) {
    if (line_each || cells.empty() || cells.back().size() >= file.sites) {
      BeginSequence(line, sites, sequences);
    } else {
      sites.Append(line.text, line.number, 1, cells.back());
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

Alignment ReadPhylip(const std::string& path, const std::string& text) {
  const PhylipFile file = ReadHeader(path, text);
  SiteReader sites(path);
  Sequences sequences = LooksInterleaved(file) ? InBlocks(file, sites) : InTurn(file, sites);
  if (sequences.lines.size() != file.taxa) {
    const long line = file.lines.empty() ? 1 : file.lines.back().number;
    throw Error(At(path, line, 1) + ": " + std::to_string(sequences.lines.size()) +
                " sequences, not the " + std::to_string(file.taxa) +
                " of the first line; fix that line, or sequences that are not " +
                std::to_string(file.sites) + " sites long");
  }
  return Checked(path, std::move(sequences), sites, file.sites, " of the first line");
}

}  // namespace zorvek::wide
