// Aligned sequences as Clustal writes them: a line that begins with the word CLUSTAL, then blocks
// with a line a sequence, each with its label, some sites, and perhaps their number so far; a line
// of marks under a block begins with a blank.
#ifndef ZORVEK_WIDE_FORMATS_CLUSTAL_H
#define ZORVEK_WIDE_FORMATS_CLUSTAL_H

#include "wide/formats/text.h"
#include "zorvek/alignment.h"

namespace zorvek::wide {

// Reads what is left of the text, holding a line of it at a time. Throws Error at a label that is
// not where the first block has it, else as SequenceBuilder::Finish does.
Alignment ReadClustal(LineReader& lines);

}  // namespace zorvek::wide

#endif
