#!/usr/bin/env bash
# Includes run downward only: each folder of src/ may include itself and the folders listed
# after it, never one above it. The public header (vexcap/) is open to every folder.
#
#   api/       the exports, the request thread and its dispatcher
#   device/    a device's two capture clients, its properties and events, the device slots
#   capture/   the capture client, its frame stream and the controls that act on a client
#   sources/   source-group discovery, lookup, format tables, names of platform values
#   frames/    pixel work: copies, conversions, rotations, vector kernels
#   controls/  wrappers of the platform's controls: extended properties, extension unit
#   log/ common/ platform/
#
# Exits 1, listing every include that runs upward.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

declare -A allowed=(
  [api]="api device capture sources frames controls log common platform"
  [device]="device capture sources frames controls log common platform"
  [capture]="capture sources frames controls log common platform"
  [sources]="sources log common platform"
  [frames]="frames log common platform"
  [controls]="controls log common platform"
  [log]="log common"
  [common]="common"
  [platform]="platform common log"
)

status=0
while IFS= read -r -d '' file; do
  folder="${file#src/}"
  folder="${folder%%/*}"
  [ -n "${allowed[$folder]+set}" ] || { echo "$file: src/$folder/ has no place in the layers"; status=1; continue; }
  while IFS=: read -r line target; do
    top="${target%%/*}"
    [ "$top" = "vexcap" ] && continue
    [ "$top" = "$target" ] && continue  # a file beside it, or a system header in quotes
    case " ${allowed[$folder]} " in
      *" $top "*) ;;
      *) echo "$file:$line: includes $target (src/$folder/ may include: ${allowed[$folder]})"; status=1 ;;
    esac
  done < <(grep -n '^[[:space:]]*#[[:space:]]*include[[:space:]]*"' "$file" |
           sed 's/^\([0-9]*\):[^"]*"\([^"]*\)".*/\1:\2/')
done < <(find src -name '*.h' -o -name '*.cpp' -o -name '*.c' | sort | tr '\n' '\0')
[ "$status" = 0 ] && echo "every include under src/ runs downward"
exit "$status"
