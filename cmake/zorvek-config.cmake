# The package zorvek: defines zorvek::zorvek, the library, and finds the NEXUS Class Library for it.
include(CMakeFindDependencyMacro)
list(PREPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}")
find_dependency(NCL)
find_dependency(Threads)
list(POP_FRONT CMAKE_MODULE_PATH)
include("${CMAKE_CURRENT_LIST_DIR}/zorvek-targets.cmake")
