// zorvek nexus_file: the command line, and the last net for what no phase of the run could handle.
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
  try {
    zorvek::Run(argv[1]);
  } catch (const std::bad_alloc&) {
    std::cout << "Error: " << argv[1] << ": not enough memory." << std::endl;
  } catch (const std::exception& failure) {
    std::cout << "Error: " << argv[1] << ": " << failure.what() << '.' << std::endl;
  }
  return 0;
}
