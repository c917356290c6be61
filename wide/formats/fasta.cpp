// Aligned sequences in FASTA: ">label anything", then lines of sites; the label ends at the first
// blank. A line of the text is held at a time.
#include "wide/formats/alignment_formats.h"
#include "wide/formats/sequence_builder.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

Alignment ReadFasta(LineReader& lines) {
  SequenceBuilder builder(lines.Name());
  for (std::string_view line; lines.NextWithText(line);) {
    if (line[0] == '>') {
      Words words(line.substr(1));
      const std::string_view label = words.Next().text;
      builder.Begin(label, lines.Number(), !words.Next().text.empty());
    } else if (builder.Taxa() > 0) {
      builder.Append(builder.Taxa() - 1, line, lines.Number(), 1);
    } else {
      throw Error(Fault{lines.Name(), lines.Number(), 1,
                        "text before the first >; begin with > and a label"});
    }
  }
  if (builder.Taxa() == 0) return {};
  return builder.Finish(builder.Sites(0), " of " + builder.Label(0));
}

}  // namespace

const AlignmentFormat kFasta = {"FASTA", [](std::string_view line) { return line[0] == '>'; },
                                ReadFasta};

}  // namespace zorvek::wide
