#include "wide/formats/alignment_file.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>

#include "wide/data/ascii.h"
#include "wide/formats/fasta.h"
#include "wide/formats/nexus.h"
#include "wide/formats/phylip.h"
#include "wide/formats/text.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

struct Format {
  const char* name;
  bool (*recognise)(std::string_view first_word);  // of the file, in capitals
  Alignment (*read)(const std::string& path, const std::string& text);
};

// A format is a file with its reader and a line here.
const Format kFormats[] = {
    {"nexus", [](std::string_view word) { return word.substr(0, 6) == "#NEXUS"; }, ReadNexusMatrix},
    {"fasta", [](std::string_view word) { return word.front() == '>'; }, ReadFasta},
    {"phylip", [](std::string_view word) { return IsDigit(word.front()); }, ReadPhylip},
};

const Format& Named(const std::string& name) {
  return *std::find_if(std::begin(kFormats), std::end(kFormats),
                       [&](const Format& format) { return format.name == name; });
}

const Format& ByContent(const std::string& path, const std::string& text) {
  std::string word(Words(text).Next().text);
  if (word.empty()) {
    throw Error(At(path, 1, 1) + ": nothing in the file; give one with aligned sequences");
  }
  std::transform(word.begin(), word.end(), word.begin(), ToUpper);
  for (const Format& format : kFormats) {
    if (format.recognise(word)) return format;
  }
  throw Error(At(path, 1, 1) + ": neither NEXUS nor FASTA nor PHYLIP; give --format if it is one");
}

}  // namespace

std::string ReadFile(const std::string& path) {
  errno = 0;
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream text;
  if (stream) text << stream.rdbuf();
  if (errno != 0) {
    throw Error(At(path) + ": cannot be read: " + std::strerror(errno) +
                "; name a file that can be");
  }
  const std::string mark = "\xEF\xBB\xBF";  // which some editors put before UTF-8
  std::string content = text.str();
  return content.compare(0, mark.size(), mark) == 0 ? content.substr(mark.size()) : content;
}

std::vector<std::string> AlignmentFormats() {
  std::vector<std::string> names;
  for (const Format& format : kFormats) names.emplace_back(format.name);
  return names;
}

Alignment ParseAlignment(const std::string& path, const std::string& text,
                         const std::string& format) {
  return (format.empty() ? ByContent(path, text) : Named(format)).read(path, text);
}

}  // namespace zorvek::wide
