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

# borvan_add_gtest(name SOURCES a.cpp … [LIBRARIES x …] [OWN_MAIN] [TIMEOUT seconds]) makes program
# and test `name`. On Windows builds CTest starts it through Wine, one such test at a time, because
# they share one prefix.
function(borvan_add_gtest name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "OWN_MAIN" "TIMEOUT" "SOURCES;LIBRARIES")
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE borvan_options borvan_gtest ${arg_LIBRARIES})
  if(NOT MSVC)
    # Tests are compiled more often than they run: unoptimised, they build in half the time.
    target_compile_options(${name} PRIVATE -O0 -g0)
  endif()
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
