# Cross build for 64-bit Windows with Debian's MinGW-w64 compilers:
#   cmake -S . -B build-windows -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-w64-x86_64.cmake
# The top CMakeLists.txt then leaves out the GUI and the benchmarks and links everything statically.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(FLEETWRIGHT_MINGW_PREFIX x86_64-w64-mingw32)
# The posix thread model: the win32 one lacks std::thread, std::mutex and friends in GCC 12.
set(CMAKE_C_COMPILER ${FLEETWRIGHT_MINGW_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${FLEETWRIGHT_MINGW_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER ${FLEETWRIGHT_MINGW_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${FLEETWRIGHT_MINGW_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# The test executables are run under Wine by scripts/windows-check.sh, not through CMake.
unset(CMAKE_CROSSCOMPILING_EMULATOR)
