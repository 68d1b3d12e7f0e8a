# borvan_options: what every target of ours is compiled with.
add_library(borvan_options INTERFACE)
target_compile_features(borvan_options INTERFACE cxx_std_20 c_std_11)

if(MSVC)
  target_compile_options(borvan_options INTERFACE /W4 $<$<BOOL:${PROJECT_IS_TOP_LEVEL}>:/WX> /permissive- /utf-8 /Zc:__cplusplus)
else()
  target_compile_options(
    borvan_options
    INTERFACE -Wall
              -Wextra
              -Wpedantic
              -Wconversion
              -Wsign-conversion
              # United sources see the file-local names of others, which do not matter here.
              $<$<NOT:$<BOOL:${CMAKE_UNITY_BUILD}>>:-Wshadow>
              # A project that adds this one may have a compiler with warnings that nobody saw here.
              $<$<BOOL:${PROJECT_IS_TOP_LEVEL}>:-Werror>
              # GCC 12 takes every insertion before a text for an overlap (its bug 105651).
              $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
              # GCC saves a tenth of its time if it collects garbage later. A source then takes up to 1 GB.
              $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-expand=300>
              $<$<CXX_COMPILER_ID:GNU>:--param=ggc-min-heapsize=600000>
              # Paths of the build folder must not reach the products: two builds from two folders
              # are byte-identical.
              -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.
              -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
endif()

if(WIN32)
  target_compile_definitions(borvan_options INTERFACE WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601)
endif()

if(MINGW)
  # Products run on a machine without our toolchain: the compiler's runtime is linked in.
  # The time stamp would differ from build to build.
  target_link_options(borvan_options INTERFACE -static -Wl,--no-insert-timestamp)
  # borvan_windows_product() moves the debug information into a file apart. A target with the property
  # BORVAN_LINES_ONLY has what a backtrace needs and no more.
  target_compile_options(
    borvan_options INTERFACE $<$<CONFIG:Release>:-g$<$<BOOL:$<TARGET_PROPERTY:BORVAN_LINES_ONLY>>:1>>)
endif()

if(BORVAN_SANITIZE)
  target_compile_options(borvan_options INTERFACE -fsanitize=${BORVAN_SANITIZE} -fno-sanitize-recover=all
                                                  -fno-omit-frame-pointer)
  target_link_options(borvan_options INTERFACE -fsanitize=${BORVAN_SANITIZE})
endif()

# The fuzzer sees which ways through our code an input takes. Not where the targets are but tests among
# others, all of which would be slower.
if(BORVAN_FUZZ AND NOT BORVAN_FUZZ STREQUAL "BRIEF")
  target_compile_options(borvan_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# A trap where the behaviour is undefined: mingw-w64 has no library of sanitizers that could report it.
if(BORVAN_TRAP_UNDEFINED)
  target_compile_options(borvan_options INTERFACE -fsanitize=undefined -fsanitize-undefined-trap-on-error)
endif()

# borvan_optimize_debug(target): optimises a Debug build a little, too, for code that tests run in loops.
function(borvan_optimize_debug target)
  if(NOT MSVC)
    target_compile_options(${target} PRIVATE $<$<CONFIG:Debug>:-O1>)
  endif()
endfunction()

# borvan_targets_below(result folder…): what the lists of these folders and of those below them make.
function(borvan_targets_below result)
  set(found)
  foreach(folder IN LISTS ARGN)
    get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
    get_property(subfolders DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
    borvan_targets_below(below ${subfolders})
    list(APPEND found ${targets} ${below})
  endforeach()
  set(${result} ${found} PARENT_SCOPE)
endfunction()
