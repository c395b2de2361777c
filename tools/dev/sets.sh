# Sourced by `dev`: what its commands ask for beyond the base, set by set, and the Debian packages
# that bring it. A line for each: name, what it is for, what proves on a machine with its own
# CPython 3.14 that it is there (commands, and Python modules with a dot in front), packages.
declare -A purpose proof packages

set_is() {
  purpose[$1]=$2 proof[$1]=$3 packages[$1]=$4
}

set_is base 'interpreter, headers, compiler, CMake and Ninja, for all commands' \
  'c++ cmake ninja' 'python3-dev g++ cmake ninja-build'
set_is tests 'pytest, and what the tests of dev run it in' \
  '.pytest .xdist .hypothesis bwrap' 'python3-pytest python3-pytest-xdist python3-hypothesis bubblewrap'
set_is arrays 'numpy and pandas, for the examples' \
  '.numpy .pandas' 'python3-numpy python3-pandas'
set_is package 'pip and the build back end, for the wheel and its tests' \
  '.pip .venv .wheel .scikit_build_core git' \
  'python3-pip python3-venv python3-wheel python3-scikit-build-core git'
set_is clang 'a second compiler' \
  'clang++' 'clang'
set_is debug 'the debug interpreter' \
  'python3.14-dbg' 'python3.14-dbg'
set_is python315 'the next interpreter' \
  'python3.15 python3.15-dbg' 'python3.15-dev python3.15-dbg python3.15-venv'
set_is checks 'formatting, static analysis and spelling' \
  'clang-format clang-tidy mypy git ruff shellcheck codespell' \
  'clang-format clang-tidy mypy git ruff shellcheck codespell'
set_is machines 'what makes machines, for the tests that set them up from nothing' \
  'mmdebstrap bwrap git' 'mmdebstrap bubblewrap git'
set_is types 'type checkers, and Node for the one from npm' \
  '.mypy node' 'mypy nodejs'
set_is browser 'Chromium, for the atlas' \
  '.selenium chromium chromedriver node' \
  'python3-selenium chromium chromium-driver nodejs fonts-dejavu-core'
set_is verify 'readers of publications, and a writer of workbooks for their tests' \
  'pdftotext prlimit .openpyxl .xlrd .rdata .xlwt' \
  'poppler-utils python3-openpyxl python3-xlrd python3-rdata python3-xlwt'
set_is readers 'R and DuckDB, which read what ./dev export writes' \
  'Rscript duckdb' 'r-base-core r-cran-jsonlite duckdb'
set_is bench 'what the module is measured with and against' \
  'cython3 valgrind .orjson' 'cython3 valgrind python3-orjson'
# A compiler for each architecture of `./dev arches`, and what runs its programs.
declare -A triplet=(
  [arm64]=aarch64-linux-gnu [s390x]=s390x-linux-gnu [riscv64]=riscv64-linux-gnu
  [ppc64el]=powerpc64le-linux-gnu [armhf]=arm-linux-gnueabihf [i386]=i686-linux-gnu
)
for name in "${!triplet[@]}"; do
  set_is "to-$name" "a compiler for $name and an emulator" \
    "${triplet[$name]}-g++ qemu-$name git" "g++-${triplet[$name]} qemu-user git"
done
set_is to-wasm32 'a compiler for WebAssembly and what runs its modules' \
  'em++ node git' 'emscripten nodejs git'
