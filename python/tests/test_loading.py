"""Where the package finds the library: VEXCAP_LIBRARY, beside the package, the search path."""
import os
import shutil
import subprocess
import sys

from conftest import ROOT

LIBRARY = ROOT / "build" / "native" / "libVexcapLib.so"
REPORT = "import vexcap, vexcap._native as n; print(len(vexcap.cameras()), n.library().path)"


def run(code, package_parent, **env_changes):
    env = {k: v for k, v in os.environ.items() if k not in ("VEXCAP_LIBRARY", "LD_LIBRARY_PATH")}
    env.update(env_changes, PYTHONPATH=str(package_parent))
    return subprocess.run([sys.executable, "-c", code], env=env, capture_output=True, text=True, timeout=60)


def test_the_named_library_is_loaded_or_its_absence_reported(tmp_path):
    found = run(REPORT, ROOT / "python", VEXCAP_LIBRARY=str(LIBRARY))
    assert found.stdout.split() == ["1", str(LIBRARY)]
    missing = run(REPORT, ROOT / "python", VEXCAP_LIBRARY=str(tmp_path / "none.so"))
    assert missing.returncode != 0
    assert "LibraryNotFoundError" in missing.stderr and "none.so: no such file" in missing.stderr


def test_a_library_beside_the_package_comes_before_the_search_path(tmp_path):
    package = tmp_path / "vexcap"
    shutil.copytree(ROOT / "python" / "vexcap", package, ignore=shutil.ignore_patterns("__pycache__"))
    shutil.copy(LIBRARY, package / LIBRARY.name)
    beside = run(REPORT, tmp_path, LD_LIBRARY_PATH=str(LIBRARY.parent))
    assert beside.stdout.split() == ["1", str(package / LIBRARY.name)]
    (package / LIBRARY.name).unlink()
    searched = run(REPORT, tmp_path, LD_LIBRARY_PATH=str(LIBRARY.parent))
    assert searched.stdout.split() == ["1", LIBRARY.name], searched.stderr
