#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang into build-fuzz and runs each of them for a while.
#
#   scripts/fuzz.sh [--merge] [SECONDS] [TARGET...]      (default: 30 seconds, every target)
#
#   --merge   afterwards, merge what the run found into fuzz/corpus/<target> (-merge=1 keeps only inputs
#             that add coverage); without it the checked-in corpus is never touched
#
# Each target runs over a working copy of its corpus in build-fuzz/corpus/<target>, which is kept between
# runs, so repeated runs go on where the last one stopped. A finding (crash, sanitizer report, broken
# invariant, time-out, memory limit) fails the script; the input is kept in build-fuzz/findings/ and the line
# to reproduce it is printed. Scratch files go to /dev/shm where there is one: the engine syncs every file it
# replaces, and a disk makes that slow.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=$root/build-fuzz
all_targets=(fuzz_profile fuzz_airfile fuzz_modelfiles fuzz_folderload fuzz_validation)

merge=0
if [ "${1-}" = --merge ]; then
    merge=1
    shift
fi
seconds=30
if [[ "${1-}" =~ ^[0-9]+$ ]]; then
    seconds=$1
    shift
fi
# libFuzzer reads 0 as "no limit".
if [ "$seconds" -lt 1 ]; then
    echo "fuzz.sh: SECONDS must be 1 or more" >&2
    exit 2
fi
targets=("$@")
[ ${#targets[@]} -gt 0 ] || targets=("${all_targets[@]}")
for target in "${targets[@]}"; do
    case " ${all_targets[*]} " in
    *" $target "*) ;;
    *)
        echo "fuzz.sh: unknown target '$target' (known: ${all_targets[*]})" >&2
        exit 2
        ;;
    esac
done

# The longest input worth trying, by target: whole files for the profile engine, small trees elsewhere.
max_len()
{
    case $1 in
    fuzz_airfile) echo 4096 ;;
    fuzz_profile) echo 16384 ;;
    *) echo 8192 ;;
    esac
}

dictionary()
{
    case $1 in
    fuzz_profile) echo "$root/fuzz/profile.dict" ;;
    fuzz_airfile) echo "" ;;
    *) echo "$root/fuzz/tree.dict" ;;
    esac
}

"$root/scripts/install-deps.sh" fuzz

cmake -S "$root" -B "$build" \
    -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DFLEETWRIGHT_FUZZ=ON \
    -DFLEETWRIGHT_GUI=OFF \
    -DFLEETWRIGHT_TESTS=OFF \
    -DFLEETWRIGHT_BENCH=OFF \
    -DFLEETWRIGHT_WERROR=ON >/dev/null
cmake --build "$build" --target "${targets[@]}" --parallel "$(nproc 2>/dev/null || echo 2)"

scratch=${TMPDIR:-/tmp}
[ -d /dev/shm ] && [ -w /dev/shm ] && scratch=/dev/shm
mkdir -p "$build/findings"

summary=()
failed=0
for target in "${targets[@]}"; do
    corpus=$build/corpus/$target
    mkdir -p "$corpus"
    cp -n "$root/fuzz/corpus/$target/"* "$corpus/" 2>/dev/null || true
    log=$build/$target.log
    options=(-max_total_time="$seconds" -max_len="$(max_len "$target")" -timeout=10 -rss_limit_mb=2048
        -print_final_stats=1 -artifact_prefix="$build/findings/$target-")
    dict=$(dictionary "$target")
    [ -n "$dict" ] && options+=(-dict="$dict")
    echo
    echo "==> $target for ${seconds}s"
    status=0
    TMPDIR=$scratch "$build/fuzz/$target" "${options[@]}" "$corpus" >"$log" 2>&1 || status=$?
    done_line=$(grep -E '^#[0-9]+[[:space:]]+DONE' "$log" | tail -n 1 || true)
    executions=$(grep -E '^stat::number_of_executed_units:' "$log" | awk '{print $2}' || true)
    cov=$(sed -nE 's/.* cov: ([0-9]+).*/\1/p' <<<"$done_line")
    ft=$(sed -nE 's/.* ft: ([0-9]+).*/\1/p' <<<"$done_line")
    corp=$(sed -nE 's/.* corp: ([0-9]+\/[0-9A-Za-z]+).*/\1/p' <<<"$done_line")
    if [ $status -ne 0 ]; then
        failed=1
        grep -E 'FUZZ INVARIANT BROKEN|ERROR: |SUMMARY: |Test unit written' "$log" | head -n 8 || true
        artifact=$(sed -nE 's/.*Test unit written to (.*)$/\1/p' "$log" | tail -n 1)
        [ -n "$artifact" ] && echo "reproduce: TMPDIR=$scratch $build/fuzz/$target $artifact"
        echo "(whole log: $log)"
        summary+=("$(printf '%-16s FINDING  %s executions' "$target" "${executions:-?}")")
    else
        summary+=("$(printf '%-16s ok       %10s executions  cov %-5s ft %-6s corpus %s' "$target" \
            "${executions:-?}" "${cov:-?}" "${ft:-?}" "${corp:-?}")")
    fi
    if [ $merge -eq 1 ] && [ $status -eq 0 ]; then
        mkdir -p "$build/merged/$target"
        TMPDIR=$scratch "$build/fuzz/$target" -merge=1 -max_len="$(max_len "$target")" -timeout=10 \
            "$build/merged/$target" "$root/fuzz/corpus/$target" "$corpus" >>"$log" 2>&1
        rm -rf "$root/fuzz/corpus/$target"
        mv "$build/merged/$target" "$root/fuzz/corpus/$target"
        echo "merged into fuzz/corpus/$target: $(find "$root/fuzz/corpus/$target" -type f | wc -l) inputs"
    fi
done

echo
echo "=== fuzzing, ${seconds}s per target"
printf '%s\n' "${summary[@]}"
exit $failed
