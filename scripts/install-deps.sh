#!/usr/bin/env bash
# Installs the Debian packages that Fleetwright needs and that are missing, and nothing else.
#
#   scripts/install-deps.sh [build|test|gui|screenshot|windows|windows-qt-source|fuzz]...   (default: test)
#
#   build       compiler, CMake, Qt 6 Widgets and the SQLite driver: enough to build everything
#   test        build + GoogleTest, Google Benchmark and clang-format: the project's test command
#   gui         the same as build; GUI tests run on Qt's offscreen platform and need no display
#   screenshot  Xvfb and ImageMagick, for screenshots of the GUI under a virtual display
#   windows     the MinGW-w64 cross compiler and Wine, for the Windows build and its tests; with a Qt for
#               Windows (scripts/windows-qt.sh) also the host Qt tools, the icon's and the installer's tools
#               and a virtual display for the program's smoke run
#   windows-qt-source   what scripts/windows-qt.sh needs to build that Qt from Debian's sources
#   fuzz        clang with its libFuzzer and sanitizer runtimes, for scripts/fuzz.sh
#
# Quiet and quick when everything is there; "apt-get update" runs only when something has to be installed.
set -euo pipefail

build_packages=(cmake g++ make qt6-base-dev libqt6sql6-sqlite)
test_packages=("${build_packages[@]}" googletest libgtest-dev libbenchmark-dev clang-format)
screenshot_packages=(xvfb xauth imagemagick)
# The cross build compiles GoogleTest from the sources of the googletest package.
windows_packages=(cmake make googletest g++-mingw-w64-x86-64 wine wine64
    qt6-base-dev libqt6sql6-sqlite g++ librsvg2-bin icoutils nsis zip xvfb xauth imagemagick xdotool)
windows_qt_source_packages=(cmake ninja-build g++ g++-mingw-w64-x86-64 qt6-base-dev qt6-base-dev-tools
    dpkg-dev tcl xz-utils)
# libFuzzer and the sanitizers' runtimes come with clang's runtime package, not with clang itself.
fuzz_packages=(cmake make clang libclang-rt-14-dev)

usage()
{
    echo "usage: $0 [build|test|gui|screenshot|windows|windows-qt-source|fuzz]..." >&2
    exit 2
}

[ $# -gt 0 ] || set -- test

wanted=()
for set_name in "$@"; do
    case "$set_name" in
    build | gui) wanted+=("${build_packages[@]}") ;;
    test) wanted+=("${test_packages[@]}") ;;
    screenshot) wanted+=("${screenshot_packages[@]}") ;;
    windows) wanted+=("${windows_packages[@]}") ;;
    windows-qt-source) wanted+=("${windows_qt_source_packages[@]}") ;;
    fuzz) wanted+=("${fuzz_packages[@]}") ;;
    -h | --help) usage ;;
    *)
        echo "$0: unknown package set '$set_name'" >&2
        usage
        ;;
    esac
done

missing=()
for package in "${wanted[@]}"; do
    # Each package once, however many sets name it.
    case " ${missing[*]-} " in *" $package "*) continue ;; esac
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done

[ ${#missing[@]} -eq 0 ] && exit 0

sudo=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "$0: missing packages (${missing[*]}) and no sudo to install them as $(id -un)" >&2
        exit 1
    fi
    sudo=(sudo)
fi

echo "Installing: ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -q
"${sudo[@]}" apt-get install -y -q --no-install-recommends "${missing[@]}"
