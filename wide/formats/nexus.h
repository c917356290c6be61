// The matrix of nucleotides of a NEXUS file [Maddison1997], read by the NEXUS Class Library
// [Lewis2003].
#ifndef ZORVEK_WIDE_FORMATS_NEXUS_H
#define ZORVEK_WIDE_FORMATS_NEXUS_H

#include <string>

#include "zorvek/alignment.h"

namespace zorvek::wide {

// Reads the one matrix of nucleotides in the DATA and CHARACTERS blocks of `text`, the content of
// the file at `path`. Throws Error.
Alignment ReadNexusMatrix(const std::string& path, const std::string& text);

}  // namespace zorvek::wide

#endif
