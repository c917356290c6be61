// Aligned sequences in PHYLIP's format [Felsenstein1989]: numbers of taxa and sites, then the
// sequences, each after its label, one after the other (over as many lines as it takes) or
// interleaved in blocks. In the relaxed form a label ends at a blank; in the strict one it is the
// first 10 columns, which may hold blanks, and the sites may follow without one.
#ifndef ZORVEK_WIDE_FORMATS_PHYLIP_H
#define ZORVEK_WIDE_FORMATS_PHYLIP_H

#include "wide/formats/text.h"
#include "zorvek/alignment.h"

namespace zorvek::wide {

// Reads what is left of the text and takes it as the first of relaxed and strict, interleaved and
// not, in which the numbers of the first line come out. Throws Error if there is none: with faults
// of the shape, then as SequenceBuilder::Finish does, of the relaxed form. Holds the text.
Alignment ReadPhylip(LineReader& lines);

}  // namespace zorvek::wide

#endif
