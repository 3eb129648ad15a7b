#!/usr/bin/env bash
# Checks that the shared library exports its C-linkage symbols unmangled.
# Usage: exported_symbols.sh LIBRARY
set -euo pipefail
symbols=$(nm -D --defined-only "$1")
for name in DegreesToRadians RadiansToDegrees TarvoFrameworkVersionNumber \
            TarvoFrameworkVersionString; do
  if ! grep -qE " [A-Za-z] $name\$" <<<"$symbols"; then
    echo "missing unmangled export: $name" >&2
    exit 1
  fi
  echo "exported: $name"
done
