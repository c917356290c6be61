// Aligned sequences, from any of the formats that zorvek-wide reads.
#ifndef ZORVEK_WIDE_DATA_ALIGNMENT_H
#define ZORVEK_WIDE_DATA_ALIGNMENT_H

#include <string>
#include <vector>

namespace zorvek::wide {

enum class Format { kByContent, kNexus, kFasta, kPhylip };

struct Alignment {
  static constexpr char kNone = '\0';  // gap or missing

  std::vector<std::string> labels;
  std::vector<std::string> cells;  // of each taxon: a symbol per site, of several states the first
  bool rna = false;                // U stands where DNA has T

  std::size_t Taxa() const { return cells.size(); }
  std::size_t Sites() const { return cells.empty() ? 0 : cells[0].size(); }
};

// The content of a file. Throws Error if it cannot be read.
std::string ReadFile(const std::string& path);

// Reads `text`, the content of the file at `path`: NEXUS with a DATA or a CHARACTERS block, FASTA,
// or relaxed PHYLIP. Throws Error.
Alignment ParseAlignment(const std::string& path, const std::string& text, Format format);

}  // namespace zorvek::wide

#endif
