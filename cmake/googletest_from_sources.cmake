# GoogleTest from Debian's source package, so that the same sources serve every compiler here.
# borvan_gtest: what a test links; borvan_add_gtest(): a test program and its CTest entry.
set(BORVAN_GOOGLETEST_DIR "/usr/src/googletest" CACHE PATH "GoogleTest's sources")
if(NOT EXISTS "${BORVAN_GOOGLETEST_DIR}/CMakeLists.txt")
  message(FATAL_ERROR "GoogleTest's sources are not in ${BORVAN_GOOGLETEST_DIR}.\n"
                      "Set BORVAN_GOOGLETEST_DIR to their folder, or BORVAN_BUILD_TESTS to OFF.")
endif()
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
foreach(target IN ITEMS gtest gtest_main gmock gmock_main)
  target_compile_options(${target} PRIVATE ${BORVAN_TEST_OPTIONS})
endforeach()
borvan_use_json()
file(WRITE "${PROJECT_BINARY_DIR}/googletest_headers.cpp" "// Carries the precompiled headers.\n")
add_library(borvan_gtest_headers OBJECT "${PROJECT_BINARY_DIR}/googletest_headers.cpp")
target_link_libraries(borvan_gtest_headers PRIVATE borvan_options borvan_gtest borvan_nlohmann_json)
target_compile_options(borvan_gtest_headers PRIVATE ${BORVAN_TEST_OPTIONS})
target_precompile_headers(
  borvan_gtest_headers PRIVATE <gmock/gmock.h> <gtest/gtest.h> <nlohmann/json.hpp> <algorithm> <array>
  <cstdint> <filesystem> <fstream> <functional> <map> <memory> <optional> <span> <sstream> <string>
  <string_view> <thread> <variant> <vector>)

# borvan_compile_as_test(name): tests are compiled more often than they run; unoptimised and with the
# precompiled headers they build in half the time.
function(borvan_compile_as_test name)
  target_compile_options(${name} PRIVATE ${BORVAN_TEST_OPTIONS})
  target_precompile_headers(${name} REUSE_FROM borvan_gtest_headers)
endfunction()

# borvan_add_gtest(name SOURCES a.cpp … [LIBRARIES x …] [OWN_MAIN] [OPTIMIZED] [TIMEOUT seconds] [SHARDS n])
# makes program and test `name`; with SHARDS n tests, name_1 and so on, which share its cases and run side by
# side. OPTIMIZED is for a test that runs its cases thousands of times. On Windows builds CTest starts it through Wine, one such test at a time, because
# they share one prefix.
function(borvan_add_gtest name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OWN_MAIN;OPTIMIZED" "TIMEOUT;SHARDS" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE borvan_options borvan_gtest ${arg_LIBRARIES})
  # The linker takes the program's own copies of the templates of JSON and of the standard library for the shared
  # libraries, too. So optimising the program doubles the speed of the code that it tests.
  if(arg_OPTIMIZED AND NOT MSVC)
    target_compile_options(${name} PRIVATE -O1 -g0)
  else()
    borvan_compile_as_test(${name})
  endif()
  if(NOT arg_OWN_MAIN)
    target_link_libraries(${name} PRIVATE gtest_main)
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 120)
  endif()
  if(BORVAN_SANITIZE STREQUAL "thread")
    math(EXPR arg_TIMEOUT "5 * ${arg_TIMEOUT}")
  endif()
  set(tests ${name})
  if(arg_SHARDS)
    set(tests)
    foreach(shard RANGE 1 ${arg_SHARDS})
      list(APPEND tests ${name}_${shard})
    endforeach()
  endif()
  set(shard 0)
  foreach(test IN LISTS tests)
    add_test(NAME ${test} COMMAND ${name})
    set_tests_properties(${test} PROPERTIES TIMEOUT ${arg_TIMEOUT})
    if(arg_SHARDS)
      set_tests_properties(
        ${test} PROPERTIES ENVIRONMENT "GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${shard}")
      math(EXPR shard "${shard} + 1")
    endif()
    if(WIN32)
      set_tests_properties(${test} PROPERTIES RESOURCE_LOCK wine)
    endif()
  endforeach()
endfunction()
