#include "wide/data/labels.h"

#include <algorithm>
#include <map>

#include "wide/data/ascii.h"
#include "zorvek/check.h"
#include "zorvek/error.h"

namespace zorvek::wide {

namespace {

constexpr std::size_t kFewestTaxa = 4;

std::string Quoted(const std::string& label, const char* special) {
  if (!label.empty() && label.find_first_of(special) == label.npos) return WithoutBlanks(label);
  std::string quoted = "'";
  for (const char c : label) quoted += c == '\'' ? "''" : std::string(1, c);
  return quoted + "'";
}

// The number of bytes of the UTF-8 character at the beginning of the text, 0 if there is none.
std::size_t CharacterLength(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  if (byte(0) < 0x80) return 1;
  const std::size_t length = byte(0) >= 0xF0 ? 4 : byte(0) >= 0xE0 ? 3 : 2;
  if (byte(0) < 0xC2 || byte(0) > 0xF4 || text.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
  }
  const bool needless = (byte(0) == 0xE0 && byte(1) < 0xA0) || (byte(0) == 0xF0 && byte(1) < 0x90);
  const bool no_character =
      (byte(0) == 0xED && byte(1) > 0x9F) || (byte(0) == 0xF4 && byte(1) > 0x8F);
  return needless || no_character ? 0 : length;
}

bool IsUtf8(std::string_view text) {
  while (!text.empty()) {
    const std::size_t length = CharacterLength(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace

std::string CleanLabel(std::string_view label) {
  const bool recode = !IsUtf8(label);
  std::string clean;
  for (const char c : label) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < ' ' || byte == 0x7F) {
      clean += ' ';
    } else if (recode && byte >= 0x80) {
      clean += static_cast<char>(0xC0 | (byte >> 6));
      clean += static_cast<char>(0x80 | (byte & 0x3F));
    } else {
      clean += c;
    }
  }
  return clean;
}

std::string WithoutBlanks(std::string label) {
  std::replace_if(label.begin(), label.end(), IsBlank, '_');
  return label;
}

std::string Folded(const std::string& label) {
  std::string folded = WithoutBlanks(label);
  std::transform(folded.begin(), folded.end(), folded.begin(), ToLower);
  return folded;
}

std::vector<std::vector<std::size_t>> Duplicates(const std::vector<std::string>& labels) {
  std::map<std::string, std::vector<std::size_t>> same;
  for (std::size_t i = 0; i < labels.size(); ++i) same[Folded(labels[i])].push_back(i);
  std::vector<std::vector<std::size_t>> groups;
  for (auto& [label, group] : same) {
    if (group.size() > 1) groups.push_back(std::move(group));
  }
  std::sort(groups.begin(), groups.end());
  return groups;
}

void CheckLabels(const std::string& file, const std::vector<std::string>& labels) {
  FaultList faults(file);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (!std::all_of(labels[i].begin(), labels[i].end(), IsBlank)) continue;
    faults.Add(0, 0, "taxon " + std::to_string(i + 1) + " has no label; write one");
  }
  for (const std::vector<std::size_t>& group : Duplicates(labels)) {
    faults.Add(0, 0,
               "label " + labels[group[0]] + " belongs to " + std::to_string(group.size()) +
                   " taxa; give each taxon its own");
  }
  faults.ThrowIfAny();
}

void CheckNumberOfTaxa(const std::string& file, std::size_t taxa, bool left) {
  if (taxa >= kFewestTaxa) return;
  throw Error(Fault{file, 0, 0,
                    std::to_string(taxa) + " taxa" + (left ? " left" : "") +
                        "; a tree needs at least " + std::to_string(kFewestTaxa)});
}

std::string QuotedForNewick(const std::string& label) {
  return Quoted(label, "()[]':;,{}=\\\"");
}

std::string QuotedForNexus(const std::string& label) {
  return Quoted(label, "()[]{}/\\,;:=*'\"`+-<>");
}

}  // namespace zorvek::wide
