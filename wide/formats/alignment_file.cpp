#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "wide/data/ascii.h"
#include "wide/formats/alignment_formats.h"
#include "wide/formats/sequence_builder.h"
#include "wide/formats/text.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {

namespace {

constexpr char kConvert[] = "convert it to FASTA";
constexpr char kAlign[] = "align its sequences and give them as FASTA";
constexpr char kDecompress[] = "decompress it, or compress it by gzip";

// What is known by its first bytes, but not read.
constexpr struct {
  std::string_view begin;
  const char* name;
  const char* remedy;
} kOthers[] = {
    {"# STOCKHOLM", "Stockholm's format", kConvert},
    {"!!NA_MULTIPLE_ALIGNMENT", "the MSF format", kConvert},
    {"PileUp", "the MSF format", kConvert},
    {"#mega", "MEGA's format", kConvert},
    {"##maf", "the MAF format", kConvert},
    {"##fileformat=VCF", "a table of variants (VCF)", kConvert},
    {"LOCUS ", "GenBank's format", kAlign},
    {"ID   ", "EMBL's format", kAlign},
    {"@", "FASTQ, or SAM", kAlign},
    {"(", "a tree", "give aligned sequences"},
    {"<", "XML, or HTML", kConvert},
    {"\xFD"
     "7zXZ",
     "compressed by xz", kDecompress},
    {"BZh", "compressed by bzip2", kDecompress},
    {"\x28\xB5\x2F\xFD", "compressed by Zstandard", kDecompress},
    {"PK\x03\x04", "a ZIP archive", kDecompress},
    {"\xFF\xFE", "text in UTF-16", "save it as UTF-8"},
    {"\xFE\xFF", "text in UTF-16", "save it as UTF-8"},
};

std::string InCapitals(std::string_view text) {
  std::string capitals(text);
  std::transform(capitals.begin(), capitals.end(), capitals.begin(), ToUpper);
  return capitals;
}

const AlignmentFormat& Named(const std::string& name) {
  for (const AlignmentFormat* const format : kAlignmentFormats) {
    if (InCapitals(format->name) == InCapitals(name)) return *format;
  }
  throw Error("no alignment format is named " + name);
}

const AlignmentFormat& ByContent(const LineReader& lines) {
  const std::string_view head = Trimmed(lines.Head());
  if (head.empty()) {
    throw Error(Fault{lines.Name(), 1, 1, "nothing in the file; give one with aligned sequences"});
  }
  const std::string line = InCapitals(head.substr(0, head.find_first_of("\r\n")));
  std::string none;
  for (const AlignmentFormat* const format : kAlignmentFormats) {
    if (format->recognise(line)) return *format;
    none += (none.empty() ? "neither " : " nor ") + std::string(format->name);
  }
  for (const auto& other : kOthers) {
    if (head.substr(0, other.begin.size()) != other.begin) continue;
    throw Error(
        Fault{lines.Name(), 1, 1, std::string("this is ") + other.name + "; " + other.remedy});
  }
  throw Error(Fault{lines.Name(), 1, 1, none, Advice::kNameTheFormat});
}

Alignment WithSites(Alignment alignment, const std::string& name) {
  if (alignment.Taxa() == 0 || alignment.Sites() > 0) return alignment;
  throw Error(Fault{name, 0, 0, "no sites; give aligned sequences"});
}

}  // namespace

std::vector<std::string> AlignmentFormats() {
  std::vector<std::string> names;
  for (const AlignmentFormat* const format : kAlignmentFormats) names.emplace_back(format->name);
  return names;
}

Alignment ReadAlignment(Source source, const std::string& format) {
  LineReader lines(std::move(source));
  return WithSites((format.empty() ? ByContent(lines) : Named(format)).read(lines), lines.Name());
}

Alignment MakeAlignment(const std::string& name, const std::vector<std::string>& labels,
                        const std::vector<std::string>& sequences) {
  SequenceBuilder builder(name);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    builder.Begin(labels[i], static_cast<long>(i) + 1);
    builder.Append(i, sequences[i], static_cast<long>(i) + 1, 1);
  }
  if (builder.Taxa() == 0) return {};
  return WithSites(builder.Finish(builder.Sites(0), " of " + builder.Label(0)), name);
}

}  // namespace zorvek::wide
