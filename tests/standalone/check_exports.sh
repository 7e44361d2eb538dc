#!/usr/bin/env bash
# Checks that a built library exports exactly the 33 functions hosts link against; for an
# import library (VexcapLib.lib), that it names exactly those 33.
# Usage: check_exports.sh LIBRARY EXPECTED_LIST
set -euo pipefail
library="$1"
expected_list="$2"

case "$library" in
  *.dll)
    led='?vexcap_get_led_power@@YAHPEAUvexcap_device@@PEAI@Z'
    objdump=x86_64-w64-mingw32-objdump
    actual=$("$objdump" -p "$library" | sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' |
             sed -n 's/^[[:space:]]*\[[[:space:]]*[0-9]*\][[:space:]]*//p' | sort) ||
      { echo "$objdump could not read $library"; exit 1; }
    ;;
  *.lib)
    led='?vexcap_get_led_power@@YAHPEAUvexcap_device@@PEAI@Z'
    nm=$(command -v llvm-nm || command -v llvm-nm-14 || echo x86_64-w64-mingw32-nm)
    # Every function of an import library has its __imp_ pointer.
    actual=$("$nm" "$library" 2>/dev/null | sed -n 's/^.* __imp_//p' | sort) ||
      { echo "$nm could not read $library"; exit 1; }
    ;;
  *)
    led='_Z20vexcap_get_led_powerP13vexcap_devicePj'
    # Every symbol the library defines for others, whatever its kind: a weak C++ runtime
    # instantiation or a stray object would be part of the interface too.
    actual=$(nm -D --defined-only "$library" | awk '{ print $NF }' | sort) ||
      { echo "nm could not read $library"; exit 1; }
    ;;
esac
expected=$(sed "s/@LED_POWER@/$led/" "$expected_list" | sort)

if [ "$actual" != "$expected" ]; then
  echo "export table of $library differs from the 33 expected names:"
  diff <(echo "$expected") <(echo "$actual") || true
  echo "0 passed, 1 failed"
  exit 1
fi
echo "$(echo "$actual" | wc -l) exports match"
echo "1 passed, 0 failed"
