#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>

#include "wide/data/ascii.h"
#include "wide/formats/clustal.h"
#include "wide/formats/fasta.h"
#include "wide/formats/nexus.h"
#include "wide/formats/phylip.h"
#include "wide/formats/text.h"
#include "zorvek/error.h"
#include "zorvek/io.h"

namespace zorvek::wide {

namespace {

struct Format {
  const char* name;
  bool (*recognise)(std::string_view first_word);  // of the text, in capitals
  Alignment (*read)(LineReader& lines);
};

// A format is a file with its reader and a line here.
const Format kFormats[] = {
    {"nexus", [](std::string_view word) { return word.substr(0, 6) == "#NEXUS"; }, ReadNexusMatrix},
    {"fasta", [](std::string_view word) { return word[0] == '>'; }, ReadFasta},
    {"phylip", [](std::string_view word) { return IsDigit(word[0]); }, ReadPhylip},
    {"clustal", [](std::string_view word) { return word.substr(0, 7) == "CLUSTAL"; }, ReadClustal},
};

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

const Format* Named(const std::string& name) {
  const auto* const found = std::find_if(std::begin(kFormats), std::end(kFormats),
                                         [&](const Format& f) { return f.name == name; });
  return found == std::end(kFormats) ? nullptr : found;
}

const Format& ByContent(const LineReader& lines) {
  const std::string_view head = Trimmed(lines.Head());
  for (const auto& other : kOthers) {
    if (head.substr(0, other.begin.size()) != other.begin) continue;
    throw Error(
        Fault{lines.Name(), 1, 1, std::string("this is ") + other.name + "; " + other.remedy});
  }
  std::string word(Words(head).Next().text);
  if (word.empty()) {
    throw Error(Fault{lines.Name(), 1, 1, "nothing in the file; give one with aligned sequences"});
  }
  std::transform(word.begin(), word.end(), word.begin(), ToUpper);
  for (const Format& format : kFormats) {
    if (format.recognise(word)) return format;
  }
  throw Error(Fault{lines.Name(), 1, 1, "neither NEXUS nor FASTA nor PHYLIP nor Clustal",
                    Advice::kNameTheFormat});
}

}  // namespace

std::vector<std::string> AlignmentFormats() {
  std::vector<std::string> names;
  for (const Format& format : kFormats) names.emplace_back(format.name);
  return names;
}

Alignment ReadAlignment(Source source, const std::string& format) {
  LineReader lines(std::move(source));
  const Format* const named = Named(format);
  if (named == nullptr && !format.empty()) throw Error("no alignment format is named " + format);
  Alignment alignment = (named != nullptr ? *named : ByContent(lines)).read(lines);
  if (alignment.Taxa() > 0 && alignment.Sites() == 0) {
    throw Error(Fault{lines.Name(), 0, 0, "no sites; give aligned sequences"});
  }
  return alignment;
}

}  // namespace zorvek::wide
