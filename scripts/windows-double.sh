#!/usr/bin/env bash
# Prepares a Wine prefix in which the product VexcapLib.dll runs on the Windows double:
#   scripts/windows-double.sh PREFIX_DIR [--scenario NAME] [--seed N]
#                                        [--double PATH/VexcapWindowsDouble.dll] [--standins DIR]
# Builds the double (the mingw-double preset) when no --double is given, then: wineboot, the
# null graphics driver, no crash debugger, the runtime classes registered with the double's
# DllPath (replacing Wine's own DeviceInformation), the mfplat.dll / mf.dll stand-ins in the
# prefix's system32 with native overrides, and the scenario (and completion-order seed) the
# double reads. Afterwards WINEPREFIX=PREFIX_DIR /usr/lib/wine/wine64 host.exe runs any host of
# VexcapLib.dll on the double's default virtual camera.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"

usage() { echo "usage: $0 PREFIX_DIR [--scenario NAME] [--seed N] [--double DLL] [--standins DIR]" >&2; exit 2; }
[ $# -ge 1 ] || usage
prefix="$(mkdir -p "$1" && cd "$1" && pwd)"
shift
scenario=default seed=1 double="" standins=""
while [ $# -gt 0 ]; do
  case "$1" in
    --scenario) scenario="$2"; shift 2 ;;
    --seed) seed="$2"; shift 2 ;;
    --double) double="$2"; shift 2 ;;
    --standins) standins="$2"; shift 2 ;;
    *) usage ;;
  esac
done
if [ -z "$double" ]; then
  cmake --preset mingw-double >/dev/null
  cmake --build --preset mingw-double --target VexcapWindowsDouble double_mfplat double_mf
  double="$here/build/mingw-double/VexcapWindowsDouble.dll"
  standins="$here/build/mingw-double/standins"
fi
[ -n "$standins" ] || standins="$(dirname "$double")/standins"
[ -f "$double" ] && [ -f "$standins/mfplat.dll" ] && [ -f "$standins/mf.dll" ] || {
  echo "windows-double: missing $double or the stand-ins in $standins" >&2; exit 1; }

export WINEPREFIX="$prefix" WINEDEBUG=-all
wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine="$(command -v wine64 || command -v wine)"
server=/usr/lib/wine/wineserver64
[ -x "$server" ] || server=/usr/lib/wine/wineserver
reg() { "$wine" reg add "$@" /f >/dev/null 2>&1; }

if [ ! -f "$prefix/.vexcap-double-booted" ]; then
  "$wine" wineboot --init >/dev/null 2>&1 || true
  "$server" -w || true
  touch "$prefix/.vexcap-double-booted" "$prefix/.vexcap-ready"
fi

# No display: the request thread's hidden window needs only the null driver. A crash ends the
# program instead of waiting in a debugger.
reg 'HKCU\Software\Wine\Drivers' /v Graphics /d null
reg 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d false
reg 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Auto /d 0

# The runtime classes the product activates, served by the double (combase reads DllPath).
double_path="$("$wine" winepath -w "$double" 2>/dev/null)"
for class in Windows.Media.Capture.MediaCapture Windows.Media.Capture.MediaCaptureInitializationSettings \
             Windows.Media.Capture.Frames.MediaFrameSourceGroup Windows.Devices.Enumeration.DeviceInformation \
             Windows.Graphics.Imaging.SoftwareBitmap Windows.Storage.Streams.Buffer \
             Windows.Foundation.PropertyValue; do
  key="HKLM\\Software\\Microsoft\\WindowsRuntime\\ActivatableClassId\\$class"
  reg "$key" /v DllPath /d "$double_path"
  reg "$key" /v ActivationType /t REG_DWORD /d 0
  reg "$key" /v Threading /t REG_DWORD /d 0
done

# Media Foundation: the stand-ins route to the same double.
cp "$standins/mfplat.dll" "$standins/mf.dll" "$prefix/drive_c/windows/system32/"
reg 'HKCU\Software\Wine\DllOverrides' /v mfplat /d native
reg 'HKCU\Software\Wine\DllOverrides' /v mf /d native

reg 'HKCU\Software\VexcapLib\WindowsDouble' /v Scenario /d "$scenario"
reg 'HKCU\Software\VexcapLib\WindowsDouble' /v Seed /t REG_DWORD /d "$seed"
"$server" -w || true
echo "windows-double: prefix $prefix ready (scenario $scenario, seed $seed)"
