#!/usr/bin/env bash
# Checks commands' exit status and output.
# Usage: expect.sh [--fresh DIR] STATUS PATTERN -- COMMAND [ARGS...]
#   --fresh DIR  delete DIR first (a test's own store directory)
# Sourced by the scenario scripts for `check` and `fail`, which count
# failures in $failures.
# check STATUS PATTERN... -- COMMAND...: COMMAND must exit with STATUS ("fail":
# any non-zero) and its combined stdout and stderr match every PATTERN
# (extended regular expressions, each matched line by line).
set -uo pipefail
failures=0
fail() { echo "FAIL: $*"; ((failures++)); }
check() {
  local want="$1" patterns=() output status pattern
  shift
  while [[ "$1" != -- ]]; do patterns+=("$1"); shift; done
  shift
  output=$("$@" 2>&1); status=$?
  printf '$ %s\n%s\n' "${*##*/}" "$output"
  if [[ "$want" == fail && $status -eq 0 ]] ||
     [[ "$want" != fail && $status -ne $want ]]; then
    fail "exit status $status, wanted $want"
  fi
  for pattern in "${patterns[@]}"; do
    grep -Eq -- "$pattern" <<<"$output" || fail "output does not match: $pattern"
  done
}

if [[ "${BASH_SOURCE[0]}" == "$0" ]]; then
  if [[ "$1" == "--fresh" ]]; then rm -rf "$2"; mkdir -p "$2"; shift 2; fi
  check "$@"
  exit $((failures > 0))
fi
