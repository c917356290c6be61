// The formats of aligned sequences. A new one is a file that defines its AlignmentFormat, named here.
#ifndef ZORVEK_WIDE_FORMATS_ALIGNMENT_FORMATS_H
#define ZORVEK_WIDE_FORMATS_ALIGNMENT_FORMATS_H

#include <string_view>

#include "wide/formats/text.h"
#include "zorvek/alignment.h"

namespace zorvek::wide {

struct AlignmentFormat {
  const char* name;
  // Whether a text may be in the format whose first line with text, in capitals, is this.
  bool (*recognise)(std::string_view line);
  // Reads what is left of the text. Throws Error: with the faults of the format, then those that
  // SequenceBuilder::Finish finds.
  Alignment (*read)(LineReader& lines);
};

extern const AlignmentFormat kNexus, kFasta, kPhylip, kClustal;

// In the order in which they are recognised.
inline constexpr const AlignmentFormat* kAlignmentFormats[] = {&kNexus, &kFasta, &kPhylip,
                                                               &kClustal};

}  // namespace zorvek::wide

#endif
