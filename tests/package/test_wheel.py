# ./dev adds: package gcc12 npm browser to-wasm32
"""The package as people install it."""

import os
import re
import subprocess
import sys
import zipfile
from functools import partial
from http.server import SimpleHTTPRequestHandler, ThreadingHTTPServer
from pathlib import Path
from threading import Thread

import pytest
from selenium.webdriver.support.ui import WebDriverWait

from harness import trial
from marlune.tables import data_tables
from tools import TOP
from tools.atlas.browser import browser
from tools.digest import digest_of


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


# Pyodide's own loader installs the wheel; what Python prints is the title.
PAGE = """<!doctype html><title></title><script type="module">
import { loadPyodide } from "./pyodide.mjs";
try {
  const python = await loadPyodide();
  await python.loadPackage("./WHEEL", { checkIntegrity: false });
  python.setStdout({ batched: (line) => { document.title = line; } });
  python.FS.mkdirTree("tools");
  for (const file of ["__init__.py", "digest.py"]) {
    python.FS.writeFile(`tools/${file}`, await (await fetch(file)).text());
  }
  python.runPython("import sys; sys.path.append('.'); from tools import digest; digest.main()");
} catch (error) { document.title = error; }
</script>"""
TESTS = """
import subprocess, sys, pytest
subprocess.Popen = lambda *_, **__: pytest.skip("takes a process")
assert pytest.main(sys.argv[1:]) == 0
"""


def test_wheel_for_the_browser_holds_the_same_in_chromium_and_passes_the_tests(tmp_path):
    run(TOP / "dev", "wheel", "--for", "wasm32", tmp_path)
    (wheel,) = tmp_path.glob("*.whl")
    pyodide = Path(os.environ["DATA_TABLES_NPM"]) / "pyodide"
    names = "dav2004r inventory laws sharing synthetic".split()
    files = (TOP / "tests" / f"test_{name}.py" for name in names)
    said = run(
        "env", f"DATA_TABLES_WHEEL={wheel}", "HYPOTHESIS_NO_PLUGINS=1",
        f"PYTHONPATH={TOP}:{Path(pytest.__file__).parents[1]}",
        "node", TOP / "tools" / "pyodide.mjs", pyodide,
        # There are no timers either.
        "-c", TESTS, "-q", "-k", "not key_interrupt", *files,
    )  # fmt: skip
    passed, skipped = map(int, re.search(r"(\d+) passed, (\d+) skipped", said).groups())
    assert passed > 5 * skipped, said
    needed = [TOP / "tools" / name for name in ("__init__.py", "digest.py")]
    for file in [*pyodide.iterdir(), *needed]:
        (tmp_path / file.name).symlink_to(file)
    (tmp_path / "page.html").write_text(PAGE.replace("WHEEL", wheel.name), encoding="utf-8")
    handler = partial(SimpleHTTPRequestHandler, directory=tmp_path)
    with ThreadingHTTPServer(("127.0.0.1", 0), handler) as server, browser(tmp_path) as driver:
        Thread(target=server.serve_forever, daemon=True).start()
        driver.get(f"http://127.0.0.1:{server.server_port}/page.html")
        said = WebDriverWait(driver, 120).until(lambda page: page.title)
        server.shutdown()
    assert said == digest_of(data_tables)[0]
