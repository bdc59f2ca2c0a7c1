#!/usr/bin/env bash
# Start-up of the program until its main window is on the screen, as a user sees it: the native program
# against the Windows one under Wine, on one virtual display.
#
#   bench/window-startup.sh [NATIVE_BUILD [WINDOWS_BUILD]]     (default: build and build-windows)
#
# Prints the median of several starts of each and their ratio, measured pair by pair (native, Windows, native,
# ...) so that a machine that slows down on the way weighs on both alike. Each start ends as soon as the window
# is mapped; the program is then killed. Wine's server is started once and kept, as it is while a user works:
# its own start (about a second here) is not counted. Needs xvfb and xdotool (scripts/install-deps.sh windows)
# and a Wine prefix that was set up before (the Windows check leaves one in WINDOWS_BUILD/wine/prefix).
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
native_build=${1:-$root/build}
windows_build=${2:-$root/build-windows}
runs=${FLEETWRIGHT_BENCH_RUNS:-7}
native=$native_build/src/app/fleetwright
windows=$windows_build/src/app/fleetwright.exe
for program in "$native" "$windows"; do
    [ -x "$program" ] || { echo "$0: no $program; build it first" >&2; exit 1; }
done

work=$(mktemp -d)
trap 'wineserver -k 2>/dev/null || true; kill $xvfb_pid 2>/dev/null || true; rm -rf "$work"' EXIT
exec {display_pipe}<> <(:)
Xvfb -displayfd "$display_pipe" -screen 0 1280x900x24 -nolisten tcp >/dev/null 2>&1 &
xvfb_pid=$!
read -r -t 20 display_number <&"$display_pipe"
export DISPLAY=:$display_number
export WINEDEBUG=-all WINEARCH=win64 WINEDLLOVERRIDES="mscoree,mshtml=" WINEPREFIX=$windows_build/wine/prefix
export HOME=$windows_build/wine/home
# The same settings for both: the program's own folder, no update check.
export FLEETWRIGHT_SETTINGS=$work/settings.ini
printf '[Fleetwright]\nAutoUpdate=0\n' >"$FLEETWRIGHT_SETTINGS"

# start_once COMMAND...: milliseconds from the start until a window named Fleetwright is visible.
start_once()
{
    local begin end pid
    begin=$(date +%s%N)
    "$@" >/dev/null 2>&1 &
    pid=$!
    until xdotool search --onlyvisible --name '^Fleetwright' >/dev/null 2>&1; do
        sleep 0.02
    done
    end=$(date +%s%N)
    kill $pid 2>/dev/null || true
    wait $pid 2>/dev/null || true
    echo $(((end - begin) / 1000000))
}

median() { sort -n | awk '{ v[NR] = $1 } END { print (NR % 2) ? v[(NR + 1) / 2] : (v[NR / 2] + v[NR / 2 + 1]) / 2 }'; }

# One start of each, not counted: the first Wine start also brings up its services.
wineserver -p
start_once "$native" >/dev/null
start_once wine "$windows" -platform windows:fontengine=freetype >/dev/null
native_times=() windows_times=() ratios=()
for _ in $(seq 1 "$runs"); do
    n=$(start_once "$native")
    w=$(start_once wine "$windows" -platform windows:fontengine=freetype)
    native_times+=("$n") windows_times+=("$w")
    ratios+=("$(awk -v w="$w" -v n="$n" 'BEGIN { printf "%.2f", w / n }')")
done
echo "native:  median $(printf '%s\n' "${native_times[@]}" | median) ms  (${native_times[*]})"
echo "Wine:    median $(printf '%s\n' "${windows_times[@]}" | median) ms  (${windows_times[*]})"
echo "ratio:   median $(printf '%s\n' "${ratios[@]}" | median)  (Wine / native, pair by pair)"
