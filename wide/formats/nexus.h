// The matrix of nucleotides of a NEXUS file [Maddison1997], read by the NEXUS Class Library
// [Lewis2003].
#ifndef ZORVEK_WIDE_FORMATS_NEXUS_H
#define ZORVEK_WIDE_FORMATS_NEXUS_H

#include "wide/formats/text.h"
#include "zorvek/alignment.h"

namespace zorvek::wide {

// Reads the one matrix of nucleotides in the DATA and CHARACTERS blocks of what is left of the text,
// which it holds. Throws Error.
Alignment ReadNexusMatrix(LineReader& lines);

}  // namespace zorvek::wide

#endif
