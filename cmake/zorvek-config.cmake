# The package zorvek: defines zorvek::zorvek, the library of zorvek-wide, and zorvek::run, the
# routines of zorvek, and finds the NEXUS Class Library for them.
include(CMakeFindDependencyMacro)
list(PREPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}")
find_dependency(NCL)
find_dependency(Threads)
find_dependency(ZLIB)
list(POP_FRONT CMAKE_MODULE_PATH)
include("${CMAKE_CURRENT_LIST_DIR}/zorvek-targets.cmake")
