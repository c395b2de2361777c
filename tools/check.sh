# Sourced by `dev check`: what keeps the tree clean. Each step is silent when it finds nothing.
# $here is the top of the tree, $preset the build, python_of its interpreter.

cd "$here"
mapfile -t sources < <(git ls-files --cached --others --exclude-standard 'tables/*.cpp')
mapfile -t headers < <(git ls-files --cached --others --exclude-standard 'tables/*.hpp')

say 'checking the shell scripts and Python'
shellcheck --check-sourced dev .ci/run
{ ruff check --quiet --no-cache . && ruff format --quiet --no-cache --check .; } ||
  fail 'ruff has found something: ruff check --fix and ruff format mend most of it'

say 'checking that each header compiles alone'
include=$(python3.14 -c 'import sysconfig; print(sysconfig.get_path("include"))')
printf '%s\n' "${headers[@]}" | xargs -P "$(nproc)" -I{} "${CXX:-c++}" -std=c++20 \
  -fsyntax-only -Wall -Wextra -Itables -isystem "$include" -include {} -xc++ /dev/null ||
  fail 'a header does not compile alone'

say 'running clang-tidy (about a minute)'
build clang
printf '%s\n' "${sources[@]}" |
  xargs -P "$(nproc)" -n 1 clang-tidy --quiet -p build/clang 2>build/clang-tidy.log ||
  fail 'clang-tidy has found something'

say 'checking the stub against the module'
# Aliases cannot be marked as being for checkers only, as the classes of the stub are.
aliases=build/stubtest-allowlist
sed -n 's/^type \([A-Z][A-Za-z]*\) = .*/marlune.tables.data_tables.\1/p' \
  marlune/tables/data_tables.pyi >"$aliases"
MYPYPATH=. python_of "$preset" -m mypy.stubtest --concise \
  --mypy-config-file pyproject.toml --allowlist "$aliases" marlune.tables.data_tables \
  >build/stubtest.log || { cat build/stubtest.log >&2; fail 'the stub and the module disagree'; }

say 'checking stub, catalogue, provenance and register against the tables'
tool_of "$preset" documents

if [ -n "${DATA_TABLES_SOURCES:-}" ]; then
  say "verifying the module against the publications in $DATA_TABLES_SOURCES"
  tool_of "$preset" verify --all "$DATA_TABLES_SOURCES" >build/verify.log ||
    { cat build/verify.log >&2; fail 'the module and the publications disagree'; }
  say "$(grep -m1 ' figures: ' build/verify.log)"
fi

if [ -n "${DATA_TABLES_NPM:-}" ]; then
  say 'checking that docs/atlas.html is what ./dev atlas writes'
  tool_of "$preset" atlas --check
else
  say 'not compared, because there is no npm: docs/atlas.html'
fi

say 'checking that the changelog names every changed column'
tool_of "$preset" changelog

say 'checking the types of the packaging tools'
mypy tools/__init__.py tools/wheel.py tools/changelog.py >build/mypy.log || { cat build/mypy.log >&2; fail 'mypy'; }

say 'checking that formatting changes nothing'
clang-format --dry-run --Werror "${sources[@]}" "${headers[@]}"
