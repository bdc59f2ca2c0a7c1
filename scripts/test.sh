#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the whole test suite.
#
#   scripts/test.sh [CTEST_ARGUMENTS]...      e.g. scripts/test.sh -L engine
#
#   FLEETWRIGHT_WERROR=1     warnings are errors (as CI builds)
#   FLEETWRIGHT_SANITIZE=1   build into build-asan with AddressSanitizer and UndefinedBehaviorSanitizer
#
# GUI tests run on Qt's offscreen platform; no display is needed.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
jobs=$(nproc 2>/dev/null || echo 2)

"$root/scripts/install-deps.sh" test

werror=OFF
[ "${FLEETWRIGHT_WERROR-}" = 1 ] && werror=ON
sanitize=OFF
build=$root/build
if [ "${FLEETWRIGHT_SANITIZE-}" = 1 ]; then
    sanitize=ON
    build=$root/build-asan
fi

# Every option is passed each time, so a build folder never keeps a choice of an earlier run.
cmake -S "$root" -B "$build" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DFLEETWRIGHT_GUI=ON \
    -DFLEETWRIGHT_TESTS=ON \
    -DFLEETWRIGHT_BENCH=ON \
    -DFLEETWRIGHT_WERROR=$werror \
    -DFLEETWRIGHT_SANITIZE=$sanitize >/dev/null
cmake --build "$build" --parallel "$jobs"
ctest --test-dir "$build" --output-on-failure "$@"
