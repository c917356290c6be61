#include "wide/program/report.h"

#include <ctime>

#include "wide/data/alignment_statistics.h"
#include "wide/formats/numbers.h"
#include "wide/program/machine.h"
#include "wide/program/summary.h"
#include "zorvek/error.h"
#include "zorvek/version.h"

namespace zorvek::wide {

namespace {

constexpr int kDigits = 6;  // of seconds

std::string Utc(std::time_t time) {
  std::tm parts{};
  gmtime_r(&time, &parts);
  char text[40];
  std::strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S UTC", &parts);
  return text;
}

std::string Identical(const AlignmentStatistics& statistics,
                      const std::vector<std::string>& labels) {
  std::vector<std::string> groups;
  for (const std::vector<std::size_t>& group : statistics.identical) {
    std::string text;
    for (const std::size_t taxon : group) text += (text.empty() ? "" : " = ") + labels[taxon];
    groups.push_back(text);
  }
  return groups.empty() ? "no two sequences" : Listed(groups, "; ");
}

std::string Sequences(const Alignment& alignment) {
  const AlignmentStatistics statistics = StatisticsOf(alignment);
  std::string text = SummaryLine("variable", std::to_string(statistics.variable) + " sites") +
                     SummaryLine("informative", std::to_string(statistics.informative) +
                                                    " sites, under parsimony") +
                     SummaryLine("identical", Identical(statistics, alignment.labels));
  text += "\ntaxon\tgaps\tambiguous\n";
  for (std::size_t taxon = 0; taxon < alignment.Taxa(); ++taxon) {
    const AlignmentStatistics::Sequence& sequence = statistics.sequences[taxon];
    text += alignment.labels[taxon] + "\t" + std::to_string(sequence.gaps) + "\t" +
            std::to_string(sequence.ambiguous) + "\n";
  }
  return text;
}

}  // namespace

std::string Report(const Results& results) {
  const Options& options = results.options;
  std::string text = SummaryLine("program", std::string("zorvek-wide ") + kVersion) +
                     SummaryLine("command", options.command) +
                     SummaryLine("machine", MachineName()) +
                     SummaryLine("began", Utc(results.began));
  text += "\nInput\n" + SummaryLine("file", options.file) + InputLines(results);
  if (results.input.alignment) text += Sequences(*results.input.alignment);
  text += "\nSettings\n";
  for (const auto& [option, value] : options.settings) {
    text += option + std::string(option.size() < 18 ? 18 - option.size() : 1, ' ') + value + "\n";
  }
  text += "\nSearch\nseconds\tlength\n";
  for (const Improvement& improvement : results.improvements) {
    text += Rounded(improvement.seconds, kDigits) + "\t" + Shortest(improvement.length) + "\n";
  }
  return text + "\nResult\n" + ResultLines(results);
}

}  // namespace zorvek::wide
