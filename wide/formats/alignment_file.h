// Alignments from files of any of the formats that zorvek-wide reads.
#ifndef ZORVEK_WIDE_FORMATS_ALIGNMENT_FILE_H
#define ZORVEK_WIDE_FORMATS_ALIGNMENT_FILE_H

#include <string>
#include <vector>

#include "wide/formats/source.h"
#include "zorvek/alignment.h"

namespace zorvek::wide {

// The names of the formats, in the order in which they are recognised.
std::vector<std::string> AlignmentFormats();

// Reads the alignment in the format of that name, or, if the name is empty, in the one that the
// content shows. Throws Error, also if there are no sites.
Alignment ReadAlignment(Source source, const std::string& format = {});

}  // namespace zorvek::wide

#endif
