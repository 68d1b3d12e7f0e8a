# Header-only packages. On Linux each is reached by a folder that holds nothing else, so that a cross
# build never sees the whole system include path.

# borvan_header_only_package(target header) makes the interface target `target` for the package that
# has `header`, such as fmt/format.h. Called where the package is used, in any number of places.
# CMAKE_PREFIX_PATH, a package manager's toolchain file or BORVAN_TARGET_FOLDER (in capitals) says where
# it is; a cross build also looks into BORVAN_BUILD_MACHINE_INCLUDES.
function(borvan_header_only_package target header)
  if(TARGET ${target})
    return()
  endif()
  string(TOUPPER "${target}_FOLDER" variable)
  find_path(${variable} "${header}" DOC "Folder of ${header}")
  if(NOT ${variable} AND CMAKE_CROSSCOMPILING)
    find_path(${variable} "${header}" PATHS ${BORVAN_BUILD_MACHINE_INCLUDES} NO_DEFAULT_PATH
              NO_CMAKE_FIND_ROOT_PATH)
  endif()
  if(NOT ${variable})
    message(FATAL_ERROR "<${header}> is not found.\n"
                        "Install its package (on Debian scripts/packages.sh does), or set ${variable} to its "
                        "include folder. The library alone needs no package: set BORVAN_BUILD_TOOLS, "
                        "BORVAN_BUILD_VIRTUAL_CAMERA and BORVAN_BUILD_TESTS to OFF.")
  endif()
  set(folder "${${variable}}")
  if(NOT CMAKE_HOST_WIN32)
    get_filename_component(header_folder "${header}" DIRECTORY)
    set(folder "${PROJECT_BINARY_DIR}/packages/${target}")
    file(MAKE_DIRECTORY "${folder}")
    file(CREATE_LINK "${${variable}}/${header_folder}" "${folder}/${header_folder}" SYMBOLIC)
  endif()
  add_library(${target} INTERFACE)
  target_include_directories(${target} SYSTEM INTERFACE "${folder}")
endfunction()

# The packages of ours, by the names of their targets.
macro(borvan_use_json)
  borvan_header_only_package(borvan_nlohmann_json nlohmann/json.hpp)
endmacro()

macro(borvan_use_cli11)
  borvan_header_only_package(borvan_cli11 CLI/CLI.hpp)
endmacro()

macro(borvan_use_fmt)
  borvan_header_only_package(borvan_fmt fmt/format.h)
  target_compile_definitions(borvan_fmt INTERFACE FMT_HEADER_ONLY)
endmacro()

macro(borvan_use_rapidxml)
  borvan_header_only_package(borvan_rapidxml rapidxml/rapidxml.hpp)
endmacro()

# Boost.Beast and what it needs; no library of Boost is linked.
macro(borvan_use_boost)
  borvan_header_only_package(borvan_boost boost/beast.hpp)
endmacro()
