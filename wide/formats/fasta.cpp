#include "wide/formats/fasta.h"

#include "wide/formats/sequence_builder.h"
#include "zorvek/error.h"

namespace zorvek::wide {

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

}  // namespace zorvek::wide
