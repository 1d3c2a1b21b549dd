#!/usr/bin/env bash
# Builds Kelvane and runs its whole test suite (unit and integration tests; the integration tests
# start their own X servers).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh build test fuzz
scripts/configure.sh
cmake --build build -j "$(nproc)"
ctest --test-dir build --output-on-failure -j "$(nproc)" --timeout 300

# The whole suite once more under AddressSanitizer and UndefinedBehaviorSanitizer, leaks included.
# Every process the tests start (the agent, kelvanectl, the peers) writes its reports into one
# folder, and a report from any of them fails the run, even one whose exit status nobody reads.
sanitizer_run() {
    local build=$1 label=$2
    local reports="$PWD/$build/reports"
    rm -rf "$reports" && mkdir -p "$reports"
    local status=0
    LSAN_OPTIONS="suppressions=$PWD/tests/data/sanitizers/lsan.supp" \
    ASAN_OPTIONS="detect_leaks=1:abort_on_error=1:log_path=$reports/asan" \
    UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:log_path=$reports/ubsan" \
    TSAN_OPTIONS="halt_on_error=1:second_deadlock_stack=1:die_after_fork=0:ignore_noninstrumented_modules=1:suppressions=$PWD/tests/data/sanitizers/tsan.supp:log_path=$reports/tsan" \
        ctest --test-dir "$build" --output-on-failure -j "$(nproc)" --timeout 600 ${label:+-L "$label"} || status=1
    local found
    found=$(grep -lE "ERROR: |runtime error|WARNING: ThreadSanitizer" "$reports"/* 2>/dev/null || true)
    if [[ -n "$found" ]]; then
        echo "Sanitizer reports in $build:"
        for report in $found; do cat "$report"; done
        status=1
    fi
    return $status
}

if [[ ! -f build-sanitize/CMakeCache.txt ]]; then
    cmake -S . -B build-sanitize -DCMAKE_BUILD_TYPE=Debug -DKELVANE_SANITIZE=ON -DKELVANE_BENCH=OFF
fi
cmake --build build-sanitize -j "$(nproc)"
sanitizer_run build-sanitize ""

# The parts that run threads of their own under ThreadSanitizer, in the tests labelled for them:
# the key thread and its listener, the serial work queue, the tray's copy and read workers and its
# folder watch, the player decoding beside the D-Bus thread.
if [[ ! -f build-tsan/CMakeCache.txt ]]; then
    cmake -S . -B build-tsan -DCMAKE_BUILD_TYPE=Debug -DKELVANE_SANITIZE_THREADS=ON -DKELVANE_BENCH=OFF
fi
cmake --build build-tsan -j "$(nproc)" --target core_tests hud_tests tray_tests platform_tests
sanitizer_run build-tsan threads

# Every reader of saved and foreign data under libFuzzer, with the same two sanitizers, for a fixed
# number of inputs over its seeds and the inputs that once broke it: a crash fails the run.
if [[ ! -f build-fuzz/CMakeCache.txt ]]; then
    CC=clang CXX=clang++ cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKELVANE_FUZZ=ON \
        -DKELVANE_TESTS=OFF -DKELVANE_BENCH=OFF
fi
cmake --build build-fuzz -j "$(nproc)" --target kelvane_fuzzers
bench/fuzz.sh 20000
