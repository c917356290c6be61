// One execution takes the bytes for a NEXUS file and reads it as a run does: the reading sequence
// with its log, and, where fewer than four taxa come of it, the distances and the diagnosis too.
// With four the distances are left out, because an unstable pair would end the process as it ends a
// run.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

#include "input/diagnosis.h"
#include "input/distances.h"
#include "input/nexus_reading.h"

// The sanitizer's own operator new ends the process where memory runs out. The run has
// std::bad_alloc to answer then, so that is what a file gets here that asks for more than a fair
// amount.
void* operator new(std::size_t size) {
  constexpr std::size_t kFair = std::size_t{1} << 30;
  if (size > kFair) throw std::bad_alloc();
  return operator new(size, std::nothrow);
}

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

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  return std::atexit(RemoveFiles);
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::ofstream(path, std::ios::binary | std::ios::trunc)
      .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
  if (zorvek::TaxaRead(zorvek::ReadNexus(path.c_str())) >= 4) return 0;
  zorvek::BuildLeavesMatrix(path.c_str());
  const std::string why = zorvek::DiagnoseInput(path.c_str());
  if (why.empty() || why.find('\n') != std::string::npos) std::abort();
  zorvek::ReleaseLeavesMatrix();
  return 0;
}
