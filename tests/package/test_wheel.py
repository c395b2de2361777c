# ./dev adds: package gcc12
"""The package as people install it."""

import os
import re
import subprocess
import sys
import zipfile

from harness import trial
from tools import TOP


def run(*command):
    done = subprocess.run(command, capture_output=True, text=True, check=False, cwd=TOP)
    assert done.returncode == 0, done.stdout + done.stderr
    return done.stdout


def test_wheel_is_what_its_tag_says_and_installs_beside_the_rest_of_the_package(
    tmp_path, monkeypatch
):
    run(TOP / "dev", "wheel", tmp_path)
    assert (tmp_path / "atlas.html").is_file() and zipfile.is_zipfile(*tmp_path.glob("*.zip"))
    (wheel,) = tmp_path.glob("*.whl")
    (major, minor) = re.search(r"-cp314-cp314-manylinux_(\d+)_(\d+)_\w+\.whl$", wheel.name).groups()
    # What the README promises.
    if "DATA_TABLES_ROOT" in os.environ:
        assert (int(major), int(minor)) <= (2, 34), wheel.name
    installed = tmp_path / "installed"
    run(sys.executable, "-m", "pip", "install", "--no-index", "--target", installed, wheel)
    monkeypatch.setenv("PYTHONPATH", str(installed))
    assert str(installed) in trial("print(importlib.util.find_spec(NAME).origin)")
    # The system gives no more memory in the midst of an import, a call, and one in a new thread.
    tests = "tests/reliability/test_out_of_memory.py", "-k", "system_has_no or storage_of_a_thread"
    assert "\n4 passed" in run(sys.executable, "-m", "pytest", "-q", *tests)
