# ./dev adds: package gcc12
"""The package as people install it."""

import os
import re
import subprocess
from pathlib import Path

TOP = Path(__file__).parent.parent.parent


def test_wheel_is_what_its_tag_says_and_installs_beside_the_rest_of_the_package(tmp_path):
    command = [TOP / "dev", "wheel", tmp_path]
    done = subprocess.run(command, capture_output=True, text=True, check=False)
    assert done.returncode == 0, done.stdout + done.stderr
    _, page, wheel = sorted(tmp_path.iterdir(), key=lambda path: path.suffix)
    assert page.name == "atlas.html"
    (major, minor) = re.search(r"-cp314-cp314-manylinux_(\d+)_(\d+)_\w+\.whl$", wheel.name).groups()
    # What the README promises.
    if "DATA_TABLES_ROOT" in os.environ:
        assert (int(major), int(minor)) <= (2, 34), wheel.name
