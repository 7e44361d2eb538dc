#!/usr/bin/env bash
# Runs a Windows program under Wine in the project's own prefix, without a display.
set -euo pipefail
here="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
export WINEPREFIX="${WINEPREFIX:-$here/build/wineprefix}"
export WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES="${WINEDLLOVERRIDES:-mscoree,mshtml=}"
wine=/usr/lib/wine/wine64
[ -x "$wine" ] || wine="$(command -v wine64 || command -v wine)"
if [ ! -f "$WINEPREFIX/.vexcap-ready" ]; then
  mkdir -p "$WINEPREFIX"
  "$wine" wineboot --init >/dev/null 2>&1 || true
  # The request thread's hidden window needs a graphics driver; the null one needs no display.
  "$wine" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d null /f >/dev/null 2>&1
  for server in /usr/lib/wine/wineserver64 /usr/lib/wine/wineserver; do [ -x "$server" ] && { "$server" -w || true; break; }; done
  touch "$WINEPREFIX/.vexcap-ready"
fi
exec "$wine" "$@"
