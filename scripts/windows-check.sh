#!/usr/bin/env bash
# Builds Fleetwright for Windows with MinGW-w64 and tries it under Wine: the engine tests (where the
# profile-file test holds our engine against the real Win32 calls), the checker, and, when a Qt for Windows is
# at hand (scripts/windows-qt.sh), the program itself: its GUI tests, a smoke run on a virtual display that
# keeps a screenshot, the simulators found through the registry, and the packages a Windows user downloads,
# the installer installed, used and removed again.
#
#   scripts/windows-check.sh [BUILD_DIR]        (default: build-windows in the repository)
#
# Leaves in BUILD_DIR: packages/ (the zip and the installer), screenshots/, logs/.
# Needs the "windows" set of scripts/install-deps.sh. Every step's exit status counts; the summary at the end
# names each one, and the script exits non-zero when any of them failed.
set -euo pipefail

# The whole script is one function, read before it runs, so that editing the file does not disturb a run.
main()
{
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

# --- Qt for Windows ---------------------------------------------------------------------------------------------
# The program needs it; the engine, the checker and their tests do not. A build of Qt from source takes too long
# for every check, so without a ready one the program's stages are left out, and the summary says so.
stage "Find a Qt for Windows"
windows_qt=${FLEETWRIGHT_WINDOWS_QT-}
gui_skipped=""
if [ -z "$windows_qt" ]; then
    qt_status=0
    windows_qt=$("$root/scripts/windows-qt.sh" --no-source-build) || qt_status=$?
    if [ $qt_status -eq 3 ]; then
        windows_qt=""
        gui_skipped="no Qt for Windows: no archive in ../shared/toolchains and none built (scripts/windows-qt.sh builds one)"
    elif [ $qt_status -ne 0 ]; then
        echo "windows-check: scripts/windows-qt.sh failed" >&2
        exit 1
    fi
fi
if [ -n "$windows_qt" ]; then
    echo "Qt for Windows: $windows_qt"
else
    echo "The program's stages are skipped: $gui_skipped"
fi

# --- build -------------------------------------------------------------------------------------------------
stage "Configure the Windows cross build in $build"
# RelWithDebInfo as the native test build: GCC 12 warns falsely (-Wrestrict) at -O3.
if ! cmake -S "$root" -B "$build" \
    -DCMAKE_TOOLCHAIN_FILE="$root/cmake/mingw-w64-x86_64.cmake" \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DFLEETWRIGHT_WINDOWS_QT="$windows_qt" \
    -DFLEETWRIGHT_GUI="$([ -n "$windows_qt" ] && echo ON || echo OFF)" \
    -DFLEETWRIGHT_TESTS=ON \
    -DFLEETWRIGHT_WERROR=ON >"$build/configure.log" 2>&1; then
    cat "$build/configure.log"
    echo "windows-check: configuring failed" >&2
    exit 1
fi
echo "configured ($(elapsed)s)"

# In the cross build "all" is the engine, the checker and the tests, with a Qt also the program, its data files
# and the GUI tests.
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
# Wine passes no variable whose name begins with QT_; WINEQT_x arrives as QT_x. The GUI tests run offscreen.
export WINEDEBUG=-all WINEARCH=win64 WINEDLLOVERRIDES="mscoree,mshtml=" LC_ALL=C.UTF-8 WINEQT_QPA_PLATFORM=offscreen
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
    # A program that crashes hands over to Wine's debugger, which may end it with status 0; a test run that
    # never printed GoogleTest's last line did not finish either.
    if [ $status -eq 0 ] && grep -q '^wine: Unhandled' "$log"; then
        echo "(crashed)"
        status=1
    elif [ $status -eq 0 ] && [[ " $* " == *" --gtest"* ]] && ! grep -q '^\[==========\] .* ran\.' "$log"; then
        echo "(the test run did not finish)"
        status=1
    fi
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

# --- the program ------------------------------------------------------------------------------------------------
if [ -n "$windows_qt" ]; then
    program=$build/src/app/fleetwright.exe
    test_app=$build/tests/app/test_app.exe
    sample_name="Corvane Skyliner 200"
    sample="$build/src/app/Sample Aircraft/$sample_name"

    # Settings live in the registry on Windows, as the values of one key; a .reg file sets them. The text is
    # UTF-16 because the application's name holds a "©".
    settings_key='HKEY_CURRENT_USER\Software\VB and VBA Program Settings\© Corvane Tools\Fleetwright'
    reg_path() { printf '%s' "Z:$1" | sed 's#/#\\\\#g'; }
    import_registry()
    {
        local file=$1
        shift
        { printf 'Windows Registry Editor Version 5.00\r\n'; printf '%s\r\n' "$@"; } |
            iconv -f UTF-8 -t UTF-16LE | { printf '\xff\xfe'; cat; } >"$file"
        "${in_prefix[@]}" wine regedit /s "$file" && "${in_prefix[@]}" wineserver -w
    }

    # --- simulators found through the registry: a made-up FS9 and FSX, as their installers register them
    stage "Simulators found through the registry"
    sims=$build/registered-simulators
    rm -rf "$sims"
    mkdir -p "$sims/FS9/Aircraft" "$sims/FSX/SimObjects/Airplanes"
    printf '[atc_airline.0]\r\nname=Corvane\r\n' >"$sims/FS9/Aircraft/airlines.cfg"
    printf 'Corvane\r\n' >"$sims/FSX/airlines.cfg"
    import_registry "$build/logs/simulators.reg" \
        '[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Microsoft\Microsoft Games\Flight Simulator\9.0]' \
        "\"EXE Path\"=\"$(reg_path "$sims/FS9")\\\\\"" \
        '[HKEY_LOCAL_MACHINE\SOFTWARE\Wow6432Node\Microsoft\Microsoft Games\Flight Simulator\10.0]' \
        "\"SetupPath\"=\"$(reg_path "$sims/FSX")\""
    log=$build/logs/registered-simulators.log
    status=0
    run_program "status bar shows the registered FS9 and FSX" "$log" "${in_prefix[@]}" \
        FLEETWRIGHT_REGISTERED_FS9="Z:$sims/FS9" FLEETWRIGHT_REGISTERED_FSX="Z:$sims/FSX" \
        wine "$test_app" --gtest_filter='*SimulatorsOfTheRegistryAreFound*' || status=$?
    if [ $status -eq 0 ] && { ! grep -q '^\[  PASSED  \] 1 test' "$log" || grep -q '^\[  SKIPPED \]' "$log"; }; then
        echo "(the check did not run, or skipped)"
        unset 'results[-1]'
        record FAIL "status bar shows the registered FS9 and FSX" 0
    fi

    # --- smoke run: the program on a virtual display, started in the sample aircraft's folder
    stage "Smoke run of fleetwright.exe under Wine on a virtual display"
    mkdir -p "$build/screenshots"
    import_registry "$build/logs/settings.reg" "[$settings_key]" \
        "\"Path\"=\"$(reg_path "$sample")\"" '"IsZandor"="1"' '"AutoUpdate"="0"'
    start=$SECONDS
    smoke_status=0
    smoke_log=$build/logs/fleetwright-smoke.log
    exec {display_pipe}<> <(:)
    Xvfb -displayfd "$display_pipe" -screen 0 1280x900x24 -nolisten tcp >"$build/logs/xvfb.log" 2>&1 &
    xvfb_pid=$!
    read -r -t 20 display_number <&"$display_pipe" || true
    if [ -z "${display_number-}" ]; then
        echo "Xvfb did not start"
        smoke_status=1
    else
        export DISPLAY=:$display_number
        started_at=$(date +%s%N)
        # Wine's DirectWrite draws no text in line edits; Qt's own FreeType engine draws what Windows would.
        (cd "$(dirname "$program")" && "${in_prefix[@]}" WINEQT_QPA_PLATFORM=windows \
            wine "$program" -platform windows:fontengine=freetype >"$smoke_log" 2>&1) &
        program_pid=$!
        window=""
        for _ in $(seq 1 120); do
            window=$(xdotool search --onlyvisible --name '^Fleetwright' 2>/dev/null | head -n 1 || true)
            [ -n "$window" ] && break
            sleep 0.5
        done
        if [ -z "$window" ]; then
            echo "no window of fleetwright.exe within 60 s"
            smoke_status=1
        else
            echo "window up after $((($(date +%s%N) - started_at) / 1000000)) ms: $(xdotool getwindowname "$window")"
            # The folder load and the first variation follow the window at once; give them time to draw.
            sleep 5
            if ! kill -0 $program_pid 2>/dev/null; then
                echo "fleetwright.exe ended by itself"
                smoke_status=1
            fi
            import -window "$window" "$build/screenshots/windows-main.png" || smoke_status=1
            xdotool windowclose "$window" 2>/dev/null || true
        fi
        sleep 2
        "${in_prefix[@]}" wineserver -k 2>/dev/null || true
        wait $program_pid 2>/dev/null || true
        unset DISPLAY
    fi
    kill $xvfb_pid 2>/dev/null || true
    wait $xvfb_pid 2>/dev/null || true
    exec {display_pipe}>&-
    cat "$smoke_log" 2>/dev/null || true
    if [ $smoke_status -eq 0 ] && [ -s "$build/screenshots/windows-main.png" ]; then
        echo "screenshot: $build/screenshots/windows-main.png"
        record PASS "smoke run of fleetwright.exe" $((SECONDS - start))
    else
        record FAIL "smoke run of fleetwright.exe" $((SECONDS - start))
    fi
    prepare_prefix "${in_prefix[@]}"

    # --- the packages
    stage "Packages: the zip and the installer"
    start=$SECONDS
    rm -rf "$build/packages"
    if (cd "$build" && cpack --config CPackConfig.cmake >"$build/logs/cpack.log" 2>&1); then
        zip_file=$(find "$build/packages" -maxdepth 1 -name 'fleetwright-*-windows-x64.zip' | head -n 1)
        installer=$(find "$build/packages" -maxdepth 1 -name 'fleetwright-*-windows-x64.exe' | head -n 1)
        ls -l "$build/packages"
        missing=""
        # Listed once: grep -q ends early, and under pipefail the listing's broken pipe would fail the test.
        listing=$(unzip -l "$zip_file")
        for member in fleetwright.exe fleetwright-check.exe parkingspecs.db LICENSE.txt THIRD-PARTY-NOTICES.txt \
            README.txt "Sample Aircraft/$sample_name/aircraft.cfg"; do
            grep -qF "/$member" <<<"$listing" || missing+=" $member"
        done
        if [ -z "$installer" ] || [ -n "$missing" ]; then
            echo "missing from the packages:${missing:- the installer}"
            record FAIL "packages" $((SECONDS - start))
        else
            record PASS "packages" $((SECONDS - start))
        fi
    else
        cat "$build/logs/cpack.log"
        record FAIL "packages" $((SECONDS - start))
    fi

    # --- the zip runs from a folder its user cannot write to (root writes anywhere, so as the unprivileged user)
    if [ -n "${zip_file-}" ] && [ ${#as_nobody[@]} -gt 0 ]; then
        stage "The portable zip from a read-only folder, as uid $NOBODY"
        start=$SECONDS
        portable=$nobody_root/portable
        rm -rf "$portable"
        mkdir -p "$portable"
        unzip -q "$zip_file" -d "$portable"
        chown -R $NOBODY:$NOBODY "$portable"
        chmod -R a-w "$portable"
        unpacked=$(find "$portable" -mindepth 1 -maxdepth 1 -type d | head -n 1)
        touch "$build/logs/portable.stamp"
        log=$build/logs/portable-readonly.log
        status=0
        (cd "$nobody_root/run" && "${as_nobody[@]}" SOURCE_DATE_EPOCH=1700000000 wine "$unpacked/fleetwright-check.exe" \
            validate "Z:$unpacked/Sample Aircraft/$sample_name" --fs9 "" --fsx "" --report - >"$log" 2>&1) || status=$?
        cat "$log"
        # 0: no errors in the report, 1: errors found; both mean the checker ran and wrote its report.
        if [ $status -le 1 ] && grep -qiF "$sample_name" "$log" && [ -z "$(find "$portable" -newer "$build/logs/portable.stamp")" ]; then
            record PASS "portable zip, read-only folder" $((SECONDS - start))
        else
            echo "(exit status $status, or something was written into the unpacked folder)"
            record FAIL "portable zip, read-only folder" $((SECONDS - start))
        fi
        chmod -R u+w "$portable"
    fi

    # --- the installer, for all users and for one, each installed, used and removed without a trace
    if [ -n "${installer-}" ]; then
        check_install()
        {
            local mode=$1 folder=$2 link=$3 key=$4
            stage "Installer, $mode: install, run the installed checker, uninstall"
            local start=$SECONDS status=0
            local unix_folder
            unix_folder=$("${in_prefix[@]}" winepath -u "$folder" 2>/dev/null)
            local unix_link
            unix_link=$("${in_prefix[@]}" winepath -u "$link" 2>/dev/null)
            local before=$build/logs/prefix-before-$mode.txt after=$build/logs/prefix-after-$mode.txt
            (cd "$build/wine/prefix/drive_c" && find . -path ./windows -prune -o -print | sort) >"$before"
            "${in_prefix[@]}" wine "$installer" /S "/$mode" && "${in_prefix[@]}" wineserver -w || status=1
            if [ ! -x "$unix_folder/fleetwright-check.exe" ] || [ ! -f "$unix_link" ]; then
                echo "not installed where expected: $unix_folder, $unix_link"
                status=1
            fi
            local report=$build/logs/installed-check-$mode.log check_status=0
            "${in_prefix[@]}" SOURCE_DATE_EPOCH=1700000000 wine "$folder\\fleetwright-check.exe" validate \
                "$folder\\Sample Aircraft\\$sample_name" --fs9 "" --fsx "" --report - >"$report" 2>&1 ||
                check_status=$?
            # 0: no errors in the report, 1: errors found; both mean the installed checker ran.
            if [ $check_status -gt 1 ] || ! grep -qiF "$sample_name" "$report"; then
                echo "the installed checker did not validate the installed sample (exit status $check_status):"
                cat "$report"
                status=1
            fi
            "${in_prefix[@]}" wine reg query "$key" >/dev/null 2>&1 || { echo "no uninstall entry $key"; status=1; }
            "${in_prefix[@]}" wine "$folder\\Uninstall.exe" /S && "${in_prefix[@]}" wineserver -w || status=1
            (cd "$build/wine/prefix/drive_c" && find . -path ./windows -prune -o -print | sort) >"$after"
            # The uninstaller runs from a copy in the temporary folder, which Windows removes later. The user's
            # Programs folder is a known folder of Windows, shared with other programs: it stays when made.
            local not_ours='/Temp/|^\./users/[^/]*/AppData/Local/Programs$'
            if ! diff <(grep -Ev "$not_ours" "$before") <(grep -Ev "$not_ours" "$after"); then
                echo "the uninstaller left files behind (above)"
                status=1
            fi
            if "${in_prefix[@]}" wine reg query "$key" >/dev/null 2>&1; then
                echo "the uninstall entry $key stayed"
                status=1
            fi
            [ $status -eq 0 ] && record PASS "installer, $mode" $((SECONDS - start)) ||
                record FAIL "installer, $mode" $((SECONDS - start))
        }
        uninstall_key='Software\Microsoft\Windows\CurrentVersion\Uninstall\Fleetwright'
        check_install AllUsers 'C:\Program Files\Fleetwright' \
            'C:\ProgramData\Microsoft\Windows\Start Menu\Programs\Fleetwright.lnk' "HKLM\\$uninstall_key"
        check_install CurrentUser "C:\users\\$(id -un)\AppData\Local\Programs\Fleetwright" \
            "C:\users\\$(id -un)\AppData\Roaming\Microsoft\Windows\Start Menu\Programs\Fleetwright.lnk" "HKCU\\$uninstall_key"
        # The user's settings are not the installer's to remove.
        "${in_prefix[@]}" wine reg query "${settings_key/HKEY_CURRENT_USER/HKCU}" >/dev/null 2>&1 ||
            { echo "the user's settings went with the program"; unset 'results[-1]'; record FAIL "installer, CurrentUser" 0; }
    fi
fi

# --- summary -----------------------------------------------------------------------------------------------------
echo
echo "==> Windows check summary ($((SECONDS - started))s in all)"
printf '%s\n' "${results[@]}"
[ -n "$gui_skipped" ] && printf 'SKIP  %-52s (%s)\n' "the program, its GUI tests and packages" "$gui_skipped"
if [ $failed -ne 0 ]; then
    echo "Windows check FAILED"
    exit 1
fi
echo "Windows check passed"
}

main "$@"
