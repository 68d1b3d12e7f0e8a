# ccache, where it is there: a file that was compiled before as it is now is not compiled again, in
# whatever build. CCACHE_DISABLE=1 turns it off.
find_program(BORVAN_CCACHE ccache)
if(BORVAN_CCACHE)
  # With precompiled headers a macro's definition and the time of a header are not looked at, and GCC
  # says which precompiled header it would read. What a miss includes is read from the compiler's list,
  # not from another run of the preprocessor.
  set(compiler_launcher "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DEPEND=1
                        "${BORVAN_CCACHE}")
  set(CMAKE_C_COMPILER_LAUNCHER "${compiler_launcher}")
  set(CMAKE_CXX_COMPILER_LAUNCHER "${compiler_launcher}")
  add_compile_options("$<$<COMPILE_LANG_AND_ID:CXX,GNU>:-fpch-preprocess>"
                      "$<$<COMPILE_LANG_AND_ID:CXX,Clang>:SHELL:-Xclang -fno-pch-timestamp>")
endif()
