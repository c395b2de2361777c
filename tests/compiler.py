"""The C++ compiler on small sources that include the module's headers."""

import os
import shlex
import subprocess
from pathlib import Path

SOURCE = Path(__file__).parent.parent / "tables"


def compile_source(source, *options):
    """Whether the source compiles, and what the compiler says."""
    # A preloaded sanitizer is meant for the interpreter, not for the compiler.
    environment = {key: value for key, value in os.environ.items() if key != "LD_PRELOAD"}
    done = subprocess.run(
        [*shlex.split(os.environ.get("CXX", "c++")), "-std=c++20", f"-I{SOURCE}", *options,
         "-xc++", "-"],
        input=source, env=environment, capture_output=True, text=True, check=False,
    )  # fmt: skip
    return done.returncode == 0, done.stderr
