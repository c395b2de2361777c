"""Python snippets in a process of their own: a process imports the module once in its life."""

import subprocess
import sys
import textwrap


def run(snippet, *options):
    """Run the snippet in a fresh interpreter of this build and return what it printed."""
    done = subprocess.run(
        [sys.executable, *options, "-c", textwrap.dedent(snippet)],
        capture_output=True,
        text=True,
        timeout=300,
        check=False,
    )
    assert done.returncode == 0, f"exit {done.returncode}\n{done.stdout}\n{done.stderr}"
    return done.stdout
