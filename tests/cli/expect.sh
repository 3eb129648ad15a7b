#!/usr/bin/env bash
# Runs one command and checks its exit status and output.
# Usage: expect.sh [--fresh DIR] STATUS PATTERN -- COMMAND [ARGS...]
#   --fresh DIR  delete DIR first (a test's own store directory)
#   STATUS       the exit status wanted, or "fail" for any non-zero status
#   PATTERN      extended regular expression the combined stdout and stderr
#                must match
set -uo pipefail

if [[ "$1" == "--fresh" ]]; then rm -rf "$2"; mkdir -p "$2"; shift 2; fi
want_status="$1" pattern="$2"
shift 2
[[ "$1" == "--" ]] && shift

output=$("$@" 2>&1)
status=$?
printf '%s\n' "$output"
if [[ "$want_status" == fail ]]; then
  if ((status == 0)); then echo "FAIL: exit status 0, wanted non-zero"; exit 1; fi
elif ((status != want_status)); then
  echo "FAIL: exit status $status, wanted $want_status"; exit 1
fi
if ! grep -Eq -- "$pattern" <<<"$output"; then
  echo "FAIL: output does not match: $pattern"; exit 1
fi
