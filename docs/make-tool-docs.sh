#!/usr/bin/env bash
# Writes the tarvo tool's man page and bash completion from its own help
# texts, so that every command and option the tool lists appears in both
# without editing anything here.
# Usage: make-tool-docs.sh TARVO_EXECUTABLE OUT_DIR
#   OUT_DIR/tarvo.1     the man page (help2man, one section per command),
#                       and tarvo.1.gz as installed
#   OUT_DIR/tarvo.bash  the completion (commands, options, option values)
set -euo pipefail
tarvo=$1 out=$2
mkdir -p "$out"

# The commands: the indented lines of the "Commands:" block of --help.
mapfile -t commands < <("$tarvo" --help | awk '
  /^Commands:/ { inside = 1; next }
  inside && /^  [a-z]/ { print $1; next }
  inside { inside = 0 }')
if ((${#commands[@]} == 0)); then
  echo "make-tool-docs.sh: no commands in '$tarvo --help'" >&2
  exit 1
fi

# Man page: the tool's --help and --version through help2man, and each
# command's --help as a section of its own.
include=$out/tarvo.h2m
{
  echo "[COMMANDS]"
  for c in "${commands[@]}"; do
    echo ".SS \"tarvo $c\""
    echo ".nf"
    "$tarvo" "$c" --help | sed -e 's/\\/\\e/g' -e 's/^\./\\\&./'
    echo ".fi"
  done
  cat <<'TEXT'
[FILES]
.TP
.I $TARVO_DOCUMENTS_DIR/Polygon.db
The area store, unless --data-dir names another directory; by default
$XDG_DATA_HOME/TarvoFramework or ~/.local/share/TarvoFramework.
[SEE ALSO]
The TarvoFramework README, in /usr/share/doc/tarvo/README.md.
TEXT
} > "$include"
help2man --no-info --section=1 \
  --version-string="$("$tarvo" --version | awk '{ print $2 }')" --name="runway-incursion warnings on real airports and recorded tracks" \
  --include="$include" --output="$out/tarvo.1" "$tarvo"
gzip -9nf --keep "$out/tarvo.1"

# Completion: per command, its options and, for an option whose help shows
# "a|b|c", those values.
{
  echo "# bash completion for tarvo, made from its help texts."
  echo "_tarvo() {"
  echo '  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}'
  echo '  if ((COMP_CWORD == 1)); then'
  echo "    COMPREPLY=(\$(compgen -W \"${commands[*]} --help --version\" -- \"\$cur\"))"
  echo '    return'
  echo '  fi'
  echo '  case "${COMP_WORDS[1]}:$prev" in'
  for c in "${commands[@]}"; do
    { "$tarvo" "$c" --help |
        grep -oE '^ +--[a-z][a-z0-9-]* [a-z0-9]+(\|[a-z0-9]+)+' || true; } |
      while read -r option values; do
        echo "    $c:$option) COMPREPLY=(\$(compgen -W \"${values//|/ }\" -- \"\$cur\")); return ;;"
      done
  done
  echo '  esac'
  echo '  case "${COMP_WORDS[1]}" in'
  for c in "${commands[@]}"; do
    options=$({ "$tarvo" "$c" --help | grep -oE '^ +--[a-z][a-z0-9-]*' || true; } |
      tr -d ' ' | sort -u | tr '\n' ' ')
    echo "    $c) local options=\"${options% }\" ;;"
  done
  echo '    *) return ;;'
  echo '  esac'
  echo '  if [[ $cur == -* ]]; then'
  echo '    COMPREPLY=($(compgen -W "$options" -- "$cur"))'
  echo '  else'
  echo '    COMPREPLY=($(compgen -f -- "$cur"))'
  echo '  fi'
  echo "}"
  echo "complete -o filenames -F _tarvo tarvo"
} > "$out/tarvo.bash"
