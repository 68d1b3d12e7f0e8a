# GoogleTest from Debian's source package, so that the same sources serve every compiler here.
# borvan_gtest: what a test links; borvan_add_gtest(): a test program and its CTest entry.
set(BORVAN_GOOGLETEST_DIR "/usr/src/googletest" CACHE PATH "GoogleTest's sources")
set(INSTALL_GTEST OFF)
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
add_subdirectory("${BORVAN_GOOGLETEST_DIR}" "${PROJECT_BINARY_DIR}/googletest" EXCLUDE_FROM_ALL)

if(BORVAN_SANITIZE)
  foreach(target IN ITEMS gtest gtest_main gmock gmock_main)
    target_compile_options(${target} PRIVATE -fsanitize=${BORVAN_SANITIZE})
  endforeach()
endif()

add_library(borvan_gtest INTERFACE)
target_link_libraries(borvan_gtest INTERFACE gmock gtest)

# GoogleTest's headers cost more than most tests that include them: read once for all. Reuse wants
# the same options, so every test is compiled with these.
if(NOT MSVC)
  set(BORVAN_TEST_OPTIONS -O0 -g0)
endif()
file(WRITE "${PROJECT_BINARY_DIR}/googletest_headers.cpp" "// Carries the precompiled headers.\n")
add_library(borvan_gtest_headers OBJECT "${PROJECT_BINARY_DIR}/googletest_headers.cpp")
target_link_libraries(borvan_gtest_headers PRIVATE borvan_options borvan_gtest)
target_compile_options(borvan_gtest_headers PRIVATE ${BORVAN_TEST_OPTIONS})
target_precompile_headers(
  borvan_gtest_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h> <algorithm> <array> <cstdint>
  <filesystem> <fstream> <functional> <memory> <optional> <span> <string> <thread> <vector>)

# borvan_compile_as_test(name): tests are compiled more often than they run; unoptimised and with the
# precompiled headers they build in half the time.
function(borvan_compile_as_test name)
  target_compile_options(${name} PRIVATE ${BORVAN_TEST_OPTIONS})
  target_precompile_headers(${name} REUSE_FROM borvan_gtest_headers)
endfunction()

# borvan_add_gtest(name SOURCES a.cpp … [LIBRARIES x …] [OWN_MAIN] [TIMEOUT seconds]) makes program
# and test `name`. On Windows builds CTest starts it through Wine, one such test at a time, because
# they share one prefix.
function(borvan_add_gtest name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OWN_MAIN" "TIMEOUT" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE borvan_options borvan_gtest ${arg_LIBRARIES})
  borvan_compile_as_test(${name})
  if(NOT arg_OWN_MAIN)
    target_link_libraries(${name} PRIVATE gtest_main)
  endif()
  add_test(NAME ${name} COMMAND ${name})
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  set_tests_properties(${name} PROPERTIES TIMEOUT ${arg_TIMEOUT})
  if(WIN32)
    set_tests_properties(${name} PROPERTIES RESOURCE_LOCK wine)
  endif()
endfunction()
