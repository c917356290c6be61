// One execution takes the bytes for a NEXUS file and reads it as a run does: the reading sequence with
// its log, the labels, the cells, the distances of a few pairs, and the diagnosis where fewer than four
// taxa come of it. BuildLeavesMatrix itself would end the process at an unstable pair.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <string>

#include "core/pair_table.h"
#include "input/diagnosis.h"
#include "input/distances.h"
#include "input/nexus_reading.h"

namespace {

// The file that every execution writes anew, in memory where the system has such a place.
std::string InputPath() {
  const char* folder = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : "/tmp";
  return std::string(folder) + "/zorvek_fuzz_" + std::to_string(getpid()) + ".nex";
}

const std::string path = InputPath();

void RemoveFiles() {
  unlink(path.c_str());
  unlink((path + ".log").c_str());
}

// Anything but that is a finding.
void Require(bool holds) {
  if (!holds) std::abort();
}

// Whether the pair gets a distance: 0 stands for none that is defined.
bool IsDistance(const zorvek::NucleotidePlanes& planes, std::size_t first, std::size_t second) {
  zorvek::PairTable table;
  const auto nucleotides = planes.NucleotidesOnly(first);
  zorvek::CountPairs(nucleotides.data(), planes.Planes(second), planes.Words(), table);
  const double distance = zorvek::PairDistance(table);
  return distance >= 0 && std::isfinite(distance);
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  return std::atexit(RemoveFiles);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  const zorvek::NexusBlocks blocks = zorvek::ReadNexus(path.c_str());
  const unsigned rows = zorvek::TaxaRead(blocks);
  const zorvek::NucleotidePlanes planes = zorvek::ReadPlanes(*blocks.data, rows);
  for (unsigned taxon = 0; taxon < std::min(rows, 4u); ++taxon) {
    blocks.taxa->GetTaxonLabel(taxon);
    Require(IsDistance(planes, 0, taxon));
  }
  if (rows < 4) {
    const std::string why = zorvek::DiagnoseInput(path.c_str());
    Require(!why.empty() && why.find('\n') == std::string::npos);
  }
  return 0;
}
