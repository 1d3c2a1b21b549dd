#!/usr/bin/env bash
# Configures the one build folder that both the run and the test commands use.
set -euo pipefail
cd "$(dirname "$0")/.."
if [[ ! -f build/CMakeCache.txt ]]; then
    cmake -S . -B build -DCMAKE_BUILD_TYPE=RelWithDebInfo -DKELVANE_TESTS=ON -DKELVANE_BENCH=ON
fi
