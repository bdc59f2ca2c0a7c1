#!/usr/bin/env bash
# Builds the engine, the checker and the engine tests for Windows with MinGW-w64 and runs them under Wine,
# where the profile-file test holds our engine against the real Win32 calls.
#
#   scripts/windows-check.sh [BUILD_DIR]        (default: build-windows in the repository)
#
# Needs the "windows" set of scripts/install-deps.sh. Every executable's exit status counts; the summary at the
# end names each one, and the script exits non-zero when any of them failed.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${1:-$root/build-windows}
mkdir -p "$build"
build=$(cd "$build" && pwd)
jobs=$(nproc 2>/dev/null || echo 2)
started=$SECONDS

# Wine, like POSIX, lets root write into read-only files, so the read-only cases of the profile test run once
# more as this user (or directly, when the script does not run as root).
NOBODY=65534
READ_ONLY_FILTER='*ReadOnly*'

results=()
failed=0
record()
{
    local status=$1 name=$2 seconds=$3
    results+=("$(printf '%-4s  %-52s %4ss' "$status" "$name" "$seconds")")
    [ "$status" = PASS ] || failed=1
}

stage_start=0
stage()
{
    echo
    echo "==> $*"
    stage_start=$SECONDS
}
elapsed() { echo $((SECONDS - stage_start)); }

# --- build -------------------------------------------------------------------------------------------------
stage "Configure the Windows cross build in $build"
# RelWithDebInfo as the native test build: GCC 12 warns falsely (-Wrestrict) at -O3.
if ! cmake -S "$root" -B "$build" \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DFLEETWRIGHT_TESTS=ON \
    -DFLEETWRIGHT_WERROR=ON >"$build/configure.log" 2>&1; then
    cat "$build/configure.log"
    echo "windows-check: configuring failed" >&2
    exit 1
fi
echo "configured ($(elapsed)s)"

# In the cross build "all" is the engine, the checker and the engine tests.
stage "Build with $jobs jobs"
cmake --build "$build" --parallel "$jobs"
echo "built ($(elapsed)s)"

checker=$(find "$build/src" -name fleetwright-check.exe -type f | head -n 1)
mapfile -t tests < <(find "$build/tests" -name 'test_*.exe' -type f | sort)
reference=$(find "$build/tests" -name test_profile_reference.exe -type f | head -n 1)
if [ -z "$checker" ] || [ -z "$reference" ]; then
    echo "windows-check: the build left no fleetwright-check.exe or no test_profile_reference.exe" >&2
    exit 1
fi

# --- Wine ----------------------------------------------------------------------------------------------------
export WINEDEBUG=-all WINEARCH=win64 WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8
unset DISPLAY WAYLAND_DISPLAY FLEETWRIGHT_WINE_UNPRIVILEGED

mkdir -p "$build/wine/prefix" "$build/wine/home"
in_prefix=(env WINEPREFIX="$build/wine/prefix" HOME="$build/wine/home")

as_nobody=()
nobody_root=""
nobody_is_temporary=0
if [ "$(id -u)" -eq 0 ]; then
    # The unprivileged user needs a prefix, a home and a work folder of its own, in a place it can reach.
    nobody_root=$build/wine-nobody
    if ! setpriv --reuid=$NOBODY --regid=$NOBODY --clear-groups test -x "$build"; then
        nobody_root=$(mktemp -d -t fleetwright-wine-nobody.XXXXXX)
        chmod 755 "$nobody_root"
        nobody_is_temporary=1
    fi
    as_nobody=(setpriv --reuid=$NOBODY --regid=$NOBODY --clear-groups
        env WINEPREFIX="$nobody_root/prefix" HOME="$nobody_root/home")
fi

stop_wine()
{
    "${in_prefix[@]}" wineserver -k 2>/dev/null || true
    if [ ${#as_nobody[@]} -gt 0 ] && [ -d "$nobody_root/prefix" ]; then
        "${as_nobody[@]}" wineserver -k 2>/dev/null || true
    fi
    if [ $nobody_is_temporary -eq 1 ]; then
        rm -rf "$nobody_root"
    fi
}
trap stop_wine EXIT

# prepare_prefix WINE_ENV...: creates the prefix on first use and waits until it has settled.
prepare_prefix()
{
    "$@" wine cmd /c exit >/dev/null 2>&1 || true
    "$@" wineserver -w
}

stage "Prepare the Wine prefix in $build/wine"
prepare_prefix "${in_prefix[@]}"
# A prefix that did not come up has no system32; say so here rather than through every test failing.
if [ ! -d "$build/wine/prefix/drive_c/windows/system32" ]; then
    echo "windows-check: Wine did not set up its prefix in $build/wine/prefix" >&2
    exit 1
fi
echo "prefix ready ($(elapsed)s)"

# run_program NAME LOG COMMAND...: runs one program with a time limit, shows and keeps its output, records
# its exit status.
run_program()
{
    local name=$1 log=$2
    shift 2
    local start=$SECONDS status=0
    echo
    echo "--- $name"
    timeout --kill-after=10 900 "$@" >"$log" 2>&1 || status=$?
    # On a loaded machine the Wine server now and then drops a client before the program has run; that says
    # nothing about the program, so it gets one more start.
    if [ $status -ne 0 ] && grep -q '^wine client error' "$log"; then
        cat "$log"
        echo "(the Wine server dropped the program; starting it once more)"
        status=0
        timeout --kill-after=10 900 "$@" >"$log" 2>&1 || status=$?
    fi
    cat "$log"
    if [ $status -eq 0 ]; then
        record PASS "$name" $((SECONDS - start))
    else
        [ $status -eq 124 ] && echo "(timed out)"
        echo "(exit status $status)"
        record FAIL "$name" $((SECONDS - start))
    fi
    return $status
}

stage "Run under Wine"
mkdir -p "$build/logs"
# Relative paths resolve in the build folder, which Wine sees on drive Z:.
cd "$build"
run_program "fleetwright-check.exe --version" "$build/logs/fleetwright-check.log" \
    "${in_prefix[@]}" wine "$checker" --version || true
for test in "${tests[@]}"; do
    name=$(basename "$test" .exe)
    run_program "$name.exe" "$build/logs/$name.log" "${in_prefix[@]}" wine "$test" --gtest_brief=1 || true
done

# --- read-only cases as an unprivileged user -------------------------------------------------------------------
if [ ${#as_nobody[@]} -gt 0 ]; then
    stage "Read-only cases as uid $NOBODY, with a prefix in $nobody_root"
else
    stage "Read-only cases as $(id -un)"
fi
log=$build/logs/test_profile_reference-readonly.log
name="test_profile_reference.exe $READ_ONLY_FILTER unprivileged"
status=0
if [ ${#as_nobody[@]} -gt 0 ]; then
    mkdir -p "$nobody_root/prefix" "$nobody_root/home" "$nobody_root/run"
    # A copy of its own, so that nothing of root's tree has to be readable to the user.
    cp "$reference" "$nobody_root/run/"
    chown -R $NOBODY:$NOBODY "$nobody_root"
    cd "$nobody_root/run"
    prepare_prefix "${as_nobody[@]}"
    run_program "$name" "$log" "${as_nobody[@]}" FLEETWRIGHT_WINE_UNPRIVILEGED=1 \
        wine "$nobody_root/run/$(basename "$reference")" --gtest_filter="$READ_ONLY_FILTER" || status=$?
else
    run_program "$name" "$log" "${in_prefix[@]}" FLEETWRIGHT_WINE_UNPRIVILEGED=1 \
        wine "$reference" --gtest_filter="$READ_ONLY_FILTER" || status=$?
fi
cd "$build"
# A filter that matched nothing, or cases that skipped, would pass without checking anything.
if [ $status -eq 0 ] && { ! grep -q '^\[  PASSED  \] [1-9]' "$log" || grep -q '^\[  SKIPPED \]' "$log"; }; then
    echo "(no read-only case ran, or one skipped)"
    unset 'results[-1]'
    record FAIL "$name" 0
fi

# --- the same report from the Windows and the Linux checker ------------------------------------------------------
# Only when the native build stands beside this one (CI builds it first). The header, with the date and the
# folder path, differs by nature and is left out of the comparison, and so is the frame sized to it.
native_checker=${FLEETWRIGHT_NATIVE_CHECKER:-$root/build/src/cli/fleetwright-check}
if [ -x "$native_checker" ]; then
    stage "Same report from the Windows and the Linux checker"
    aircraft="$build/report-check/Corvane Check"
    rm -rf "$build/report-check"
    mkdir -p "$aircraft/texture.blue" "$aircraft/model" "$aircraft/empty"
    printf '[fltsim.0]\r\ntitle=Corvane Check Blue\r\nmodel=\r\ntexture=blue\r\nsim=check\r\natc_airline=CORVANE\r\n'\
'[fltsim.2]\r\ntitle=Corvane Check Blue\r\nmodel=heavy\r\ntexture=red // gone\r\nsim=missing\r\n'\
'[effects]\r\nwake=fx_wake, 1\r\n' >"$aircraft/aircraft.cfg"
    printf '[models]\r\nnormal=check\r\n' >"$aircraft/model/model.cfg"
    printf 'bmp' >"$aircraft/texture.blue/check_t.bmp"
    # The frame's lines of stars and rules are as wide as the header, which holds the folder path.
    report_body() { sed 1,3d "$1" | tr -d '\r' | grep -vE '^([*]+|(-:)+-?)$'; }
    options=11111111111111111111111
    native_log=$build/logs/report-native.log
    windows_log=$build/logs/report-windows.log
    start=$SECONDS
    report_status=0
    env SOURCE_DATE_EPOCH=1700000000 FLEETWRIGHT_SETTINGS="$build/report-check/settings.ini" \
        "$native_checker" validate "$aircraft" --fs9 "" --fsx "" --options $options --report "$native_log" \
        >/dev/null 2>&1 || true
    "${in_prefix[@]}" SOURCE_DATE_EPOCH=1700000000 wine "$checker" validate "Z:$aircraft" --fs9 "" --fsx "" \
        --options $options --report "Z:$windows_log" >/dev/null 2>&1 || true
    if [ ! -s "$native_log" ] || [ ! -s "$windows_log" ]; then
        echo "a checker wrote no report"
        report_status=1
    elif ! diff <(report_body "$native_log") <(report_body "$windows_log"); then
        report_status=1
    fi
    if [ $report_status -eq 0 ]; then
        echo "the reports agree ($(wc -l <"$native_log") lines)"
        record PASS "same report from both checkers" $((SECONDS - start))
    else
        record FAIL "same report from both checkers" $((SECONDS - start))
    fi
fi

# --- summary -----------------------------------------------------------------------------------------------------
echo
echo "==> Windows check summary ($((SECONDS - started))s in all)"
printf '%s\n' "${results[@]}"
if [ $failed -ne 0 ]; then
    echo "Windows check FAILED"
    exit 1
fi
echo "Windows check passed"
