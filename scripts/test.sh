#!/usr/bin/env bash
# Builds Kelvane and runs its whole test suite (unit and integration tests; the integration tests
# start their own X servers).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh build test
scripts/configure.sh
cmake --build build -j "$(nproc)"
ctest --test-dir build --output-on-failure -j "$(nproc)" --timeout 300
