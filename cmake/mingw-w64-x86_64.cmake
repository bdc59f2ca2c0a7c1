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

# FLEETWRIGHT_WINDOWS_QT names a static Qt 6 for MinGW-w64 (scripts/windows-qt.sh prints where it put one).
# With it the cross build makes the program and its GUI tests too. Qt's host tools (moc, uic, rcc) come from
# Debian's own Qt of the same version. This does what Qt's own qt.toolchain.cmake does, with the prefix given.
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FLEETWRIGHT_WINDOWS_QT)
if(FLEETWRIGHT_WINDOWS_QT)
    if(NOT EXISTS "${FLEETWRIGHT_WINDOWS_QT}/lib/cmake/Qt6/Qt6Config.cmake")
        message(FATAL_ERROR "FLEETWRIGHT_WINDOWS_QT=${FLEETWRIGHT_WINDOWS_QT} holds no Qt 6 (lib/cmake/Qt6 is missing)")
    endif()
    list(PREPEND CMAKE_PREFIX_PATH "${FLEETWRIGHT_WINDOWS_QT}/lib/cmake")
    list(PREPEND CMAKE_FIND_ROOT_PATH "${FLEETWRIGHT_WINDOWS_QT}")
    list(PREPEND CMAKE_MODULE_PATH "${FLEETWRIGHT_WINDOWS_QT}/lib/cmake/Qt6/platforms")
    set(QT_HOST_PATH /usr CACHE PATH "")
    if(NOT QT_HOST_PATH_CMAKE_DIR)
        file(GLOB host_qt_tools /usr/lib/*/cmake/Qt6CoreTools)
        list(GET host_qt_tools 0 host_qt_tools)
        get_filename_component(host_qt_cmake "${host_qt_tools}" DIRECTORY)
        set(QT_HOST_PATH_CMAKE_DIR "${host_qt_cmake}" CACHE PATH "")
    endif()
endif()
