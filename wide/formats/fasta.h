// Aligned sequences in FASTA: ">label anything", then lines of sites; the label ends at the first
// blank.
#ifndef ZORVEK_WIDE_FORMATS_FASTA_H
#define ZORVEK_WIDE_FORMATS_FASTA_H

#include "wide/formats/text.h"
#include "zorvek/alignment.h"

namespace zorvek::wide {

// Reads what is left of the text, holding a line of it at a time. Throws Error as
// SequenceBuilder::Finish does.
Alignment ReadFasta(LineReader& lines);

}  // namespace zorvek::wide

#endif
