# ./dev adds: machines
"""The README's two commands on machines that have nothing yet, as roots of containers that allow
neither namespaces nor mounts.
"""

import re
import shutil
import subprocess
from pathlib import Path

import pytest

from tools import TOP

ALLOWED = (
    "-all chown dac_override fowner fsetid kill setgid setuid setpcap net_bind_service net_raw "
    "sys_chroot mknod audit_write setfcap"
)
CONTAINER = ["setpriv", "--inh-caps=-all", "--bounding-set=" + ALLOWED.replace(" ", ",+")]


def inside(root, *command):
    """The command, run in this root as in a container."""
    names = Path("/etc/resolv.conf").resolve()
    return subprocess.run(
        ["bwrap", "--die-with-parent", "--unshare-pid", "--clearenv", "--bind", root, "/",
         "--dev", "/dev", "--proc", "/proc", "--ro-bind-try", names, "/etc/resolv.conf",
         "--setenv", "PATH", "/usr/sbin:/usr/bin:/sbin:/bin", "--setenv", "HOME", "/root",
         "--chdir", "/", *CONTAINER, *command],
        stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False,
    )  # fmt: skip


@pytest.mark.skipif(
    inside("/", "true").returncode != 0, reason="no namespaces here, in which to make machines"
)
@pytest.mark.parametrize(
    "suite, packages, way",
    [
        # Neither git, CMake, a compiler nor CPython 3.14.
        ("bookworm", "apt", "proot takes their place.*making a root with CPython 3.14"),
        ("forky", "python3-dev,g++,git", "installing .*: python3-dev g.. cmake ninja-build\n"),
    ],
)
def test_both_commands_set_up_all_they_need(suite, packages, way, tmp_path):
    root = tmp_path / "root"
    subprocess.run(
        ["mmdebstrap", "--quiet", "--variant=apt", "--skip=cleanup/apt/lists",
         '--aptopt=Acquire::Check-Valid-Until "false"', "--dpkgopt=force-unsafe-io",
         f"--include={packages}", suite, root], stdin=subprocess.DEVNULL, check=True,
    )  # fmt: skip
    shutil.copytree(TOP, root / "tree", ignore=shutil.ignore_patterns("build", "dist", ".git"))
    said = ""
    for command, shown in ("run", "table_name='PER2020_Ind_1er.orden'"), ("test", " passed"):
        done = inside(root, "/tree/dev", command)
        said += done.stderr
        assert done.returncode == 0 and shown in done.stdout, done.stdout + said
    assert re.search(way, said, re.DOTALL), said
