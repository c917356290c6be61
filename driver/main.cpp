// zorvek nexus_file: the command line, and the last net for what no phase of the run can handle.
#include <exception>
#include <iostream>
#include <new>

#include "driver/run.h"

int main(int argc, char** argv) {
  zorvek::CreateSources();
  if (argc < 2) {
    std::cout << "Usage: zorvek nexus_file" << std::endl;
    return 0;
  }
  const auto fail = [path = argv[1]](const char* why) {
    std::cout << "Error: " << path << ": " << why << '.' << std::endl;
  };
  try {
    zorvek::Run(argv[1]);
  } catch (const std::bad_alloc&) {
    fail("not enough memory");
  } catch (const std::exception& failure) {
    fail(failure.what());
  } catch (...) {
    fail("failed for an unknown reason");
  }
  return 0;
}
