// Labels of taxa: which are the same, and how the output formats want them.
#ifndef ZORVEK_WIDE_DATA_LABELS_H
#define ZORVEK_WIDE_DATA_LABELS_H

#include <string>
#include <string_view>
#include <vector>

namespace zorvek::wide {

// The label as all outputs can carry it: bytes that are no UTF-8 are taken as Latin-1 and recoded,
// and control characters become blanks. For every reader of labels, once.
std::string CleanLabel(std::string_view label);

// The form in which labels are compared: NEXUS tells neither upper from lower case nor a blank from
// an underscore.
std::string Folded(const std::string& label);

// The groups of labels that are the same, by index, in order of the first.  Cost: n log n.
std::vector<std::vector<std::size_t>> Duplicates(const std::vector<std::string>& labels);

// Blanks as underscores, for formats in which a blank ends a label.
std::string WithoutBlanks(std::string label);

// As Newick wants it: blanks become underscores; a label with a character that the format uses itself
// (parentheses, brackets, quotes, colon, semicolon, comma), or that DendroPy takes for one (braces,
// equals sign, backslash, double quote), is quoted, what it holds left as it is, quotes doubled ('it''s').
std::string QuotedForNewick(const std::string& label);

// As NEXUS wants it, which uses more characters itself, the hyphen among them.
std::string QuotedForNexus(const std::string& label);

}  // namespace zorvek::wide

#endif
