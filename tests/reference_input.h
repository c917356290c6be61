// The input stage as its definitions say it, slowly: the yardstick of the tests and the benchmarks.
#ifndef ZORVEK_TESTS_REFERENCE_INPUT_H
#define ZORVEK_TESTS_REFERENCE_INPUT_H

#include <string>
#include <vector>

#include "core/pair_table.h"
#include "input/nexus_reading.h"

namespace zorvek::reference {

// Counts the pairings of taxa i and j cell by cell as NCL has them, and their columns in single precision.
void CountPairs(const NxsDataBlock& data, unsigned i, unsigned j, PairTable& table,
                float (&totals)[kNucleotides]);

// The distance from such a table and totals through EigenRG, 0 when the spectrum is unstable.
// Destroys the table. Requires: no total is 0.
double Distance(PairTable& table, const float (&totals)[kNucleotides]);

// Sorts the taxa by exchange: for each position, for each later one, swap if strictly greater.
void ExchangeSort(std::vector<int>& list, const std::vector<double>& distance);

// A NEXUS file with a DATA block of this format ("DATATYPE=DNA ...") and these matrix lines.
std::string NexusFile(std::size_t rows, std::size_t sites, const std::string& format,
                      const std::string& matrix);

// A file of this content, and its reading log, which live as long as the object.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& content);
  ~TemporaryFile();
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const char* Path() const { return path_.c_str(); }
  std::string LogPath() const { return path_ + ".log"; }

 private:
  std::string path_;
};

}  // namespace zorvek::reference

#endif
