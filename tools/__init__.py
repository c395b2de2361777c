"""What `./dev` runs, each a module of its own: `./dev python -m tools.digest`, at the top."""

from pathlib import Path

TOP = Path(__file__).resolve().parent.parent
