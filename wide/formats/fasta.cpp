#include "wide/formats/fasta.h"

#include <utility>

#include "wide/formats/sites.h"
#include "wide/formats/text.h"
#include "zorvek/error.h"

namespace zorvek::wide {

Alignment ReadFasta(const std::string& path, const std::string& text) {
  Sequences sequences;
  SiteReader sites(path);
  Faults shape;
  Lines lines(text);
  for (std::string_view line; lines.Next(line);) {
    if (IsBlankLine(line)) continue;
    if (line[0] == '>') {
      sequences.Begin(Words(line.substr(1)).Next().text, lines.Number());
      if (sequences.alignment.labels.back().empty()) {
        shape.Add(At(path, lines.Number(), 2) + ": no label; write one after the >");
      }
    } else if (sequences.lines.empty()) {
      throw Error(At(path, lines.Number(), 1) +
                  ": text before the first >; begin with > and a label");
    } else {
      sites.Append(line, lines.Number(), 1, sequences.alignment.cells.back());
    }
  }
  shape.ThrowIfAny();
  if (sequences.lines.empty()) return {};
  const std::size_t length = sequences.alignment.Sites();
  const std::string whose = " of " + sequences.alignment.labels[0];
  return Checked(path, std::move(sequences), sites, length, whose);
}

}  // namespace zorvek::wide
