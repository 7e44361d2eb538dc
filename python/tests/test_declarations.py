"""The package declares every export of the library, under the names the header gives."""
import re

from conftest import ROOT

from vexcap import _native


def test_every_export_is_declared_and_the_led_power_symbols_are_the_headers():
    exported = (ROOT / "tests" / "standalone" / "exports.txt").read_text().split()
    declared = [name for name in _native._DECLARATIONS if name != _native.LED_POWER_SYMBOL]
    assert sorted(declared) == sorted(name for name in exported if name != "@LED_POWER@")
    header = (ROOT / "include" / "vexcap" / "vexcap.h").read_text()
    symbols = re.findall(r'#\s*define VEXCAP_GET_LED_POWER_SYMBOL "([^"]+)"', header)
    assert sorted(symbols) == sorted(_native.LED_POWER_SYMBOLS.values())
