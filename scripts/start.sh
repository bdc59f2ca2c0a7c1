#!/usr/bin/env bash
# Installs what is missing, builds Fleetwright into build/ and starts it.
#
#   scripts/start.sh
#
# Needs a display (X11 or Wayland). Only the program is built; scripts/test.sh builds and runs the rest.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build
jobs=$(nproc 2>/dev/null || echo 2)

"$root/scripts/install-deps.sh" gui

configure=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
# A first configure here leaves out tests and benchmarks, whose packages the "gui" set does not install;
# a build folder that scripts/test.sh set up keeps its choices.
if [ ! -f "$build/CMakeCache.txt" ]; then
    configure+=(-DFLEETWRIGHT_TESTS=OFF -DFLEETWRIGHT_BENCH=OFF)
fi
cmake -S "$root" -B "$build" "${configure[@]}" >/dev/null
cmake --build "$build" --parallel "$jobs" --target fleetwright

if [ -z "${DISPLAY-}" ] && [ -z "${WAYLAND_DISPLAY-}" ]; then
    echo "start.sh: built $build/src/app/fleetwright, but there is no display to show it on" >&2
    echo "start.sh: run it from a desktop session, or under xvfb-run" >&2
    exit 1
fi
# Started from its own folder, the folder list opens where "Sample Aircraft" lies beside the program.
cd "$build/src/app"
exec ./fleetwright
