#include "wide/program/machine.h"

#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <thread>

namespace zorvek::wide {

namespace {

// What follows `key` and the separator in the first line of the file that begins with the key;
// without blanks and quotes around it. Empty if there is none.
std::string Entry(const char* path, const std::string& key, char separator) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);) {
    const std::size_t at = line.find(separator);
    if (line.compare(0, key.size(), key) != 0 || at == line.npos) continue;
    const std::size_t begin = line.find_first_not_of(" \t\"", at + 1);
    if (begin == line.npos) return "";
    return line.substr(begin, line.find_last_not_of(" \t\"") + 1 - begin);
  }
  return "";
}

}  // namespace

std::string MachineName() {
  utsname system{};
  uname(&system);
  std::string processor = Entry("/proc/cpuinfo", "model name", ':');
  if (processor.empty()) processor = system.machine;
  std::string name = Entry("/etc/os-release", "PRETTY_NAME", '=');
  if (name.empty()) name = std::string(system.sysname) + " " + system.release;
  const unsigned cores = std::thread::hardware_concurrency();
  return processor + ", " + std::to_string(cores) + (cores == 1 ? " core, " : " cores, ") + name;
}

double MachineMemory() {
  double bytes =
      static_cast<double>(sysconf(_SC_PHYS_PAGES)) * static_cast<double>(sysconf(_SC_PAGESIZE));
  double limit = 0;
  if (std::ifstream("/sys/fs/cgroup/memory.max") >> limit) bytes = std::min(bytes, limit);
  return std::max(bytes, 0.0);
}

}  // namespace zorvek::wide
