#!/usr/bin/env bash
# Runs the fuzzers over their seeds in tests/data/fuzz, each for a number of inputs, and prints what
# each ran, the crashes it found and the coverage it reached beyond the seeds. An input that breaks
# a target is kept in build-fuzz/crashes; copy it into the target's seed folder once it is fixed, so
# that every later run tries it again.
#
# Usage: bench/fuzz.sh [RUNS] [TARGET...]   (RUNS defaults to 1,000,000; targets to all)
# Needs the fuzz build: CC=clang CXX=clang++ cmake -S . -B build-fuzz -DKELVANE_FUZZ=ON
#   -DKELVANE_TESTS=OFF -DKELVANE_BENCH=OFF && cmake --build build-fuzz --target kelvane_fuzzers
set -uo pipefail
cd "$(dirname "$0")/.."
build=${KELVANE_FUZZ_BUILD:-build-fuzz}
runs=${1:-1000000}
shift || true
targets=("$@")
if [[ ${#targets[@]} -eq 0 ]]; then
    targets=()
    for seeds in tests/data/fuzz/*/; do targets+=("$(basename "$seeds")"); done
fi

export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS="detect_leaks=1:abort_on_error=1"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1"
export LSAN_OPTIONS="suppressions=$PWD/tests/data/sanitizers/lsan.supp"

failed=0
printf '%-12s %12s %9s %8s %14s %10s\n' target inputs seconds crashes "seed coverage" "new edges"
for target in "${targets[@]}"; do
    program="$build/tests/fuzz/${target}_fuzzer"
    if [[ ! -x "$program" ]]; then
        echo "$target: $program is not built" >&2
        failed=1
        continue
    fi
    # New inputs go to a scratch corpus; the seeds stay as they are.
    scratch=$(mktemp -d)
    crashes="$build/crashes/$target"
    mkdir -p "$crashes"
    log="$build/fuzz-$target.log"
    started=$(date +%s.%N)
    "$program" -runs="$runs" -seed=1 -max_len=4096 -timeout=10 -rss_limit_mb=4096 -print_final_stats=1 \
        -artifact_prefix="$crashes/" "$scratch" "tests/data/fuzz/$target" >"$log" 2>&1
    status=$?
    ended=$(date +%s.%N)
    rm -rf "$scratch"
    inputs=$(grep -oP 'stat::number_of_executed_units: \K[0-9]+' "$log" | tail -1)
    seedcov=$(grep -oP 'INITED cov: \K[0-9]+' "$log" | head -1)
    lastcov=$(grep -oP '^#[0-9]+.*cov: \K[0-9]+' "$log" | tail -1)
    found=0
    if [[ $status -ne 0 ]]; then
        found=1
        inputs=${inputs:-$(grep -oP '^#\K[0-9]+' "$log" | tail -1)}
        failed=1
    fi
    printf '%-12s %12s %9.1f %8s %14s %10s\n' "$target" "${inputs:-?}" "$(awk "BEGIN { print $ended - $started }")" \
        "$found" "${seedcov:-?}" "$(( ${lastcov:-0} - ${seedcov:-0} ))"
    if [[ $found -ne 0 ]]; then
        echo "  $target broke on an input (kept in $crashes):"
        grep -E "ERROR|runtime error|property broken|SUMMARY|Test unit written" "$log" | head -5 | sed 's/^/    /'
    fi
done
exit $failed
