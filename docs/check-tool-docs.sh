#!/usr/bin/env bash
# Checks the generated completion by completing real command lines, and the
# man page by looking for every command the tool lists.
# Usage: check-tool-docs.sh DOCS_DIR TARVO_EXECUTABLE
set -euo pipefail
docs=$1 tarvo=$2
# shellcheck source=/dev/null
source "$docs/tarvo.bash"
complete_line() {  # complete_line WORD...: the completions of the last word
  COMP_WORDS=(tarvo "$@")
  COMP_CWORD=$#
  COMPREPLY=()
  _tarvo
  echo "${COMPREPLY[*]}"
}
status=0
check() {  # check EXPECTED WORD...
  local expected=$1 got; shift
  got=$(complete_line "$@")
  if [[ "$got" != "$expected" ]]; then
    echo "tarvo $* <TAB>: expected '$expected', got '$got'" >&2
    status=1
  fi
}
check "replay" rep
check "--format" replay --form
check "csv" replay track --format c
check "kmh kt mps" replay track --speed-unit ""
check "--replace" import --rep
check "" list --nothing

man_text=$(MANWIDTH=200 man -l "$docs/tarvo.1" 2>/dev/null)
for c in $("$tarvo" --help | awk '/^Commands:/ {i=1; next} i && /^  [a-z]/ {print $1; next} {i=0}'); do
  grep -q "tarvo $c" <<<"$man_text" || { echo "man page lacks tarvo $c" >&2; status=1; }
done
((status == 0)) && echo "completion and man page: ok"
exit "$status"
