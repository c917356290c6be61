# Finds the NEXUS Class Library (Debian: libncl-dev) and defines NCL::NCL.
find_path(NCL_INCLUDE_DIR ncl/ncl.h)
find_library(NCL_LIBRARY ncl)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(NCL
  REQUIRED_VARS NCL_LIBRARY NCL_INCLUDE_DIR
  REASON_FAILURE_MESSAGE "install Debian's libncl-dev")
if(NCL_FOUND AND NOT TARGET NCL::NCL)
  add_library(NCL::NCL UNKNOWN IMPORTED)
  # Debian builds the library with const accessors; without the definition the link fails on them.
  set_target_properties(NCL::NCL PROPERTIES
    IMPORTED_LOCATION "${NCL_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${NCL_INCLUDE_DIR}"
    INTERFACE_COMPILE_DEFINITIONS NCL_CONST_FUNCS=1)
endif()
mark_as_advanced(NCL_INCLUDE_DIR NCL_LIBRARY)
