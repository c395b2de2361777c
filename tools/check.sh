# Sourced by `dev check`: what keeps the tree clean, step by step. A step is silent when it finds
# nothing. $preset is the build.

steps=(shell python javascript headers tidy stub documents publications atlas changelog types format spelling links)
declare -A checks=(
  [shell]='the shell scripts'
  [python]='style and formatting of Python (ruff check --fix and ruff format mend most of it)'
  [javascript]='style and formatting of JavaScript (biome check --write mends most of it)'
  [headers]='that each header compiles alone'
  [tidy]='clang-tidy (about a minute)'
  [stub]='the stub against the module'
  [documents]='stub, catalogue, provenance and register against the tables'
  [publications]='the module against the publications in DATA_TABLES_SOURCES'
  [atlas]='that docs/atlas.html is what ./dev atlas writes'
  [changelog]='that the changelog names every changed column'
  [types]='the types of tools and tests'
  [format]='that clang-format changes nothing'
  [spelling]='spelling'
  [links]='that links of the documents lead somewhere'
)

# The tree's files of these patterns, also where git does not trust the folder or there is no git;
# an error where there are none.
tree_files() {
  local files
  if [ -e .git ]; then
    mapfile -t files < <(git ls-files --cached --others \
      --exclude-standard --deduplicate -- "$@" | while read -r file; do
      [ ! -e "$file" ] || printf '%s\n' "$file"
    done)
  else
    local pattern names=()
    for pattern in "$@"; do names+=(-o -path "./$pattern"); done
    mapfile -t files < <(find . \( -path ./build -o -path ./dist \) -prune -o \
      -type f \( "${names[@]:1}" \) -printf '%P\n')
  fi
  [ ${#files[@]} -gt 0 ] || fail "there are no files: $*"
  printf '%s\n' "${files[@]}"
}

# What a command says where it fails.
quiet() {
  local log=build/check.log
  mkdir -p build
  "$@" >"$log" 2>&1 || { cat "$log" >&2; return 1; }
}

check_shell() { shellcheck --check-sourced dev .ci/run; }

check_python() { ruff check --quiet --no-cache . && ruff format --quiet --no-cache --check .; }

check_javascript() {
  if [ -z "${DATA_TABLES_NPM:-}" ]; then
    say 'NOT checked, because there is no npm: JavaScript'
    return
  fi
  quiet "$DATA_TABLES_NPM"/@biomejs/cli-linux-*/biome check --error-on-warnings --colors=off
}

check_headers() {
  local include compiler headers
  headers=$(tree_files 'tables/*.hpp') || return
  include=$(python3.14 -I -c 'import sysconfig; print(sysconfig.get_path("include"))')
  read -ra compiler < <(compiler_of release)
  xargs -d '\n' -P "$(nproc)" -I{} "${compiler[@]}" -std=c++20 -fsyntax-only -Wall -Wextra -Itables \
    -isystem "$include" -include {} -xc++ /dev/null <<<"$headers"
}

check_tidy() {
  local sources
  sources=$(tree_files 'tables/*.cpp') || return
  build clang
  xargs -d '\n' -P "$(nproc)" -n 1 clang-tidy --quiet -p build/clang 2>build/clang-tidy.log \
    <<<"$sources"
}

check_stub() {
  # Aliases cannot be marked as being for checkers only, as the classes of the stub are.
  local aliases=build/stubtest-allowlist
  build "$preset"
  sed -n 's/^type \([A-Z][A-Za-z]*\) = .*/marlune.tables.data_tables.\1/p' \
    marlune/tables/data_tables.pyi >"$aliases"
  MYPYPATH=. quiet python_of "$preset" -m mypy.stubtest --concise \
    --mypy-config-file pyproject.toml --allowlist "$aliases" marlune.tables.data_tables
}

check_documents() { build "$preset" && tool_of "$preset" documents; }

check_publications() {
  local folders
  if [ -z "${DATA_TABLES_SOURCES:-}" ]; then
    say 'NOT verified against the publications: DATA_TABLES_SOURCES names none'
    return
  fi
  build "$preset"
  IFS=: read -ra folders <<<"$DATA_TABLES_SOURCES"
  quiet tool_of "$preset" verify --all "${folders[@]}" && say "$(grep -m1 ' figures: ' build/check.log)"
}

check_atlas() {
  if [ -z "${DATA_TABLES_NPM:-}" ]; then
    say 'NOT compared, because there is no npm: docs/atlas.html'
    return
  fi
  build "$preset" && tool_of "$preset" atlas --check
}

check_changelog() { build "$preset" && tool_of "$preset" changelog; }

check_types() {
  quiet mypy --strict tools &&
    # What is None where a test takes it for something makes the test fail.
    quiet mypy --check-untyped-defs --disable-error-code union-attr --disable-error-code index \
      --disable-error-code var-annotated tests benchmarks
}

check_format() {
  local files
  files=$(tree_files 'tables/*.cpp' 'tables/*.hpp') || return
  xargs -d '\n' clang-format --dry-run --Werror <<<"$files"
}

check_links() { build "$preset" && tool_of "$preset" links; }

check_spelling() {
  local files
  files=$(tree_files '*.md' '*.py' '*.sh' '*.cpp' '*.hpp' '*.js' '*.toml' dev .ci/run) || return
  xargs -d '\n' codespell <<<"$files"
}

# ./dev check [STEP...]
check_command() {
  local step
  cd "$here"
  [ $# -gt 0 ] || set -- "${steps[@]}"
  for step in "$@"; do
    [ -n "${checks[$step]:-}" ] || fail "not one of ${steps[*]}: $step"
  done
  for step in "$@"; do
    say "checking ${checks[$step]}"
    "check_$step" || { say "$step: that is not as it has to be"; exit 1; }
  done
}
