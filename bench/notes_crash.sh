#!/usr/bin/env bash
# The agent killed outright 200 times while notes are typed and to-dos change from the command
# line; every acknowledged change must be there afterwards. The test suite runs 20 of these.
set -euo pipefail
build="$(cd "${1:-build}" && pwd)"
KELVANE_BINARY="$build/src/app/kelvane" KELVANE_NOTES_CRASH_TRIALS="${TRIALS:-200}" \
    "$build/tests/app/agent_tests" --gtest_filter='NotesAgent.NothingAcknowledgedIsLostWhenTheAgentIsKilled' |
    grep -E '\[ metric \]|OK|FAILED|Failure|lost'
