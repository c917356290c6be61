# What an install puts where, the CMake package for users of the library, and the Debian packages that
# cpack makes: zorvek with the programs, libzorvek-dev with library and headers, and python3-zorvek with
# ZORVEK_PYTHON.
include(CMakePackageConfigHelpers)

# Debian wants manual pages and changelogs compressed; every man reads them so.
function(install_compressed file name destination component)
  set(compressed ${PROJECT_BINARY_DIR}/${name}.gz)
  execute_process(COMMAND gzip -9nc ${PROJECT_SOURCE_DIR}/${file} OUTPUT_FILE ${compressed}
                  COMMAND_ERROR_IS_FATAL ANY)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${file})
  install(FILES ${compressed} DESTINATION ${destination} COMPONENT ${component})
endfunction()

# What Debian wants of each package besides.
function(install_notes package component)
  set(folder ${CMAKE_INSTALL_DATADIR}/doc/${package})
  install(FILES packaging/copyright DESTINATION ${folder} COMPONENT ${component})
  install_compressed(CHANGELOG.md changelog ${folder} ${component})
endfunction()

install(TARGETS zorvek zorvek-wide COMPONENT program)
install_compressed(man/zorvek.1 zorvek.1 ${CMAKE_INSTALL_MANDIR}/man1 program)
install_compressed(man/zorvek-wide.1 zorvek-wide.1 ${CMAKE_INSTALL_MANDIR}/man1 program)
install_notes(zorvek program)

set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zorvek)
# zorvek::zorvek is the library of zorvek-wide with the public headers, zorvek::run that of the routines
# of zorvek with theirs, which name each other from a folder of their own.
set(run_headers ${CMAKE_INSTALL_INCLUDEDIR}/zorvek-run)
target_include_directories(zorvek_wide INTERFACE $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_include_directories(zorvek_run INTERFACE $<INSTALL_INTERFACE:${run_headers}>)
install(TARGETS zorvek_core zorvek_run zorvek_wide EXPORT zorvek COMPONENT development)
install(DIRECTORY include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR} COMPONENT development)
install(DIRECTORY core driver input tree search output DESTINATION ${run_headers}
        COMPONENT development FILES_MATCHING PATTERN *.h)
install(EXPORT zorvek NAMESPACE zorvek:: FILE zorvek-targets.cmake DESTINATION ${package_dir}
        COMPONENT development)
write_basic_package_version_file(zorvek-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES cmake/zorvek-config.cmake cmake/FindNCL.cmake
              ${PROJECT_BINARY_DIR}/zorvek-config-version.cmake
        DESTINATION ${package_dir} COMPONENT development)
install_notes(libzorvek-dev development)
if(ZORVEK_PYTHON)
  install_notes(python3-zorvek python)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "zorvek maintainers <maintainers@zorvek.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_COMPONENTS_ALL program development)
if(ZORVEK_PYTHON)
  list(APPEND CPACK_COMPONENTS_ALL python)
endif()
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_COMPONENT_PROGRAM_DESCRIPTION
    "The programs zorvek and zorvek-wide read one alignment, estimate the distance of every two taxa,
 and search for the unrooted binary tree of least minimum-evolution length.")
set(CPACK_DEBIAN_PROGRAM_PACKAGE_NAME zorvek)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SECTION science)
set(CPACK_DEBIAN_PROGRAM_PACKAGE_SHLIBDEPS ON)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "The library behind the program zorvek: static library, headers and CMake package.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libzorvek-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "libncl-dev, zlib1g-dev")
set(CPACK_COMPONENT_PYTHON_DESCRIPTION
    "The Python module zorvek makes distances, trees and their supports from alignments
 and NumPy arrays.")
set(CPACK_DEBIAN_PYTHON_PACKAGE_NAME python3-zorvek)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PYTHON_PACKAGE_SHLIBDEPS ON)
# The extension is that of the Python it was built with.
set(CPACK_DEBIAN_PYTHON_PACKAGE_DEPENDS "python3-numpy, ${ZORVEK_PYTHON_DEPENDS}")
include(CPack)
