// What the formats of plain sequences have in common: sites from lines of text, and the checks of
// labels and lengths that follow.
#ifndef ZORVEK_WIDE_FORMATS_SITES_H
#define ZORVEK_WIDE_FORMATS_SITES_H

#include <string>
#include <string_view>
#include <vector>

#include "zorvek/alignment.h"
#include "zorvek/error.h"

namespace zorvek::wide {

// The sequences of a file while it is read, with the line in which each begins.
struct Sequences {
  Alignment alignment;
  std::vector<long> lines;

  void Begin(std::string_view label, long line);
};

// Takes sites from lines and notes what cannot be one.
class SiteReader {
 public:
  explicit SiteReader(const std::string& path) : path_(path) {}

  // Appends the sites in `part`, which begins in this line and column.
  void Append(std::string_view part, long line, long column, std::vector<StateSet>& cells);

  // Whether U was seen, and nowhere T.
  bool Rna() const { return saw_u_ && !saw_t_; }

  void ThrowIfAny() const { faults_.ThrowIfAny(); }

 private:
  std::string path_;
  Faults faults_;
  bool saw_t_ = false;
  bool saw_u_ = false;
};

// Throws Error with all faults of the first kind that there is: symbols that stand for no
// nucleotide, labels that are the same, sequences that are not `sites` sites long. `whose` tells
// where that length comes from (" of a").
Alignment Checked(const std::string& path, Sequences&& sequences, const SiteReader& reader,
                  std::size_t sites, const std::string& whose);

}  // namespace zorvek::wide

#endif
