# Cross build for 64-bit Windows with Debian's mingw-w64, in its POSIX-threads flavour: the library
# needs std::thread and std::mutex, which the Win32-threads flavour lacks.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# Libraries and headers come from the cross toolchain only: a header of the build machine must
# never reach a Windows object file.
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Packages that are headers alone serve every compiler: they come from the build machine, each by itself.
set(BORVAN_BUILD_MACHINE_INCLUDES /usr/local/include /usr/include)

# CTest runs Windows programs through Wine.
set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/run_with_wine.sh")
