#!/usr/bin/env bash
# The conventions the tools keep, on what changed: clang-format (.clang-format) on the changed
# lines and clang-tidy (.clang-tidy) on the changed library sources, against the merge base
# with main (on main itself, against the last commit). BASE=REV picks another base. Needs
# build/native/compile_commands.json (the native preset writes it).
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

base="${BASE:-}"
if [ -z "$base" ]; then
  base="$(git merge-base HEAD main 2>/dev/null || true)"
  [ "$base" = "$(git rev-parse HEAD)" ] && base="HEAD~1"
  [ -n "$base" ] || base="HEAD~1"
fi
echo "style: changes since $(git rev-parse --short "$base")"

status=0
format_diff="$(git clang-format --quiet --diff --extensions c,cpp,h "$base" -- src tests bench fuzz tools python/native || true)"
if [ -n "$format_diff" ] && [ "$format_diff" != "no modified files to format" ] &&
   [ "$format_diff" != "clang-format did not modify any files" ]; then
  echo "$format_diff"
  echo "style: the lines above are not formatted (run: git clang-format $base)"
  status=1
fi

mapfile -t changed < <(git diff --name-only --diff-filter=AMR "$base" -- 'src/*.cpp' |
                       grep -vE '^src/platform/(windows|windows_double)/|_win32\.cpp$' || true)
if [ "${#changed[@]}" -gt 0 ]; then
  [ -f build/native/compile_commands.json ] || cmake --preset native >/dev/null
  if ! clang-tidy -p build/native --quiet "${changed[@]}" 2>/dev/null | grep -E 'warning:|error:'; then
    echo "style: clang-tidy found nothing in ${#changed[@]} changed source(s)"
  else
    status=1
  fi
fi
exit "$status"
