#!/usr/bin/env bash
# Builds Kelvane and runs its whole test suite (unit and integration tests; the integration tests
# start their own X servers).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh build test
scripts/configure.sh
cmake --build build -j "$(nproc)"
ctest --test-dir build --output-on-failure -j "$(nproc)" --timeout 300

# The tray and drop tests once more under AddressSanitizer and UndefinedBehaviorSanitizer (leaks
# too): files, threads and clean-ups meet there.
if [[ ! -f build-sanitize/CMakeCache.txt ]]; then
    cmake -S . -B build-sanitize -DCMAKE_BUILD_TYPE=Debug -DKELVANE_SANITIZE=ON -DKELVANE_BENCH=OFF
fi
cmake --build build-sanitize -j "$(nproc)" --target tray_tests
ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest --test-dir build-sanitize --output-on-failure -j "$(nproc)" --timeout 300 -R '^(Tray|DropZone|StagingArea)\.'
