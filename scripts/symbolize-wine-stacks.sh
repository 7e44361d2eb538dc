#!/usr/bin/env bash
# Names the functions in winedbg backtraces of a log ("in vexcaplib (+0x35c38)") from the
# modules of a build folder, which carry their debug information.
# usage: scripts/symbolize-wine-stacks.sh build/mingw-double < test.log
set -euo pipefail
build="$1"
addr2line=x86_64-w64-mingw32-addr2line
objdump=x86_64-w64-mingw32-objdump
declare -A files bases
for file in "$build"/*.dll "$build"/*.exe; do
  [ -f "$file" ] || continue
  name="$(basename "$file")"
  module="$(echo "${name%.*}" | tr '[:upper:]' '[:lower:]')"
  files[$module]="$file"
  bases[$module]="$($objdump -p "$file" | awk '/^ImageBase/ {print $2}')"
done
while IFS= read -r line; do
  if [[ "$line" =~ \ in\ ([a-z0-9_]+)\ \(\+0x([0-9a-f]+)\) ]] && [ -n "${files[${BASH_REMATCH[1]}]:-}" ]; then
    module="${BASH_REMATCH[1]}"
    address="$(printf '0x%x' $((16#${bases[$module]} + 16#${BASH_REMATCH[2]})))"
    where="$($addr2line -f -C -i -p -e "${files[$module]}" "$address" | sed 's|.*/src/|src/|;s|.*/tests/|tests/|' | tr '\n' ' ')"
    echo "$line  <- $where"
  else
    echo "$line"
  fi
done
