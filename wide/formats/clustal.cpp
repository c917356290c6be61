// Aligned sequences as Clustal writes them: a line that begins with the word CLUSTAL, then blocks
// with a line a sequence, each with its label, some sites, and perhaps their number so far; a line
// of marks under a block begins with a blank. A line of the text is held at a time.
#include "wide/data/ascii.h"
#include "wide/data/labels.h"
#include "wide/formats/alignment_formats.h"
#include "wide/formats/sequence_builder.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

// Where in the block a line stands.
struct Position {
  std::size_t taxon = 0;
  bool first_block = true;
};

void ReadLine(std::string_view line, long number, Position at, SequenceBuilder& builder) {
  Words words(line);
  const Word label = words.Next();
  const Word sites = words.Next();
  if (at.first_block) {
    builder.Begin(label.text, number);
  } else if (at.taxon >= builder.Taxa() || builder.Label(at.taxon) != CleanLabel(label.text)) {
    throw Error(Fault{builder.File(), number, 1,
                      "label " + CleanLabel(label.text) + " where the first block has " +
                          (at.taxon < builder.Taxa() ? builder.Label(at.taxon) : "none") +
                          "; fix the order of the lines"});
  }
  builder.Append(at.taxon, sites.text, number, sites.column);
}

Alignment ReadClustal(LineReader& lines) {
  SequenceBuilder builder(lines.Name());
  std::string_view line;
  lines.NextWithText(line);  // CLUSTAL, the version, what else the program has to say
  Position at;
  while (lines.Next(line)) {
    if (!line.empty() && !IsBlank(line[0])) {
      ReadLine(line, lines.Number(), at, builder);
      ++at.taxon;
    } else if (at.taxon > 0) {
      at = {0, false};
    }
  }
  if (builder.Taxa() == 0) return {};
  return builder.Finish(builder.Sites(0), " of " + builder.Label(0));
}

}  // namespace

const AlignmentFormat kClustal = {
    "Clustal", [](std::string_view line) { return line.substr(0, 7) == "CLUSTAL"; }, ReadClustal};

}  // namespace zorvek::wide
