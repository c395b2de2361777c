# Sourced by `dev`: which tests are run, with what, and how.

# The sets that test files ask for beside `tests`, in a line of theirs.
sets_of_files() {
  (cd "$here" && sed -n 's/^# \.\/dev adds: //p' "$@") | tr ' ' '\n' | sort -u
}

# Sets `arguments_from_top` to pytest arguments with paths from the caller's folder as paths from the
# top. Some options are followed by a text that is no path, whatever there is of that name.
from_top() {
  local argument before='' path
  arguments_from_top=()
  for argument in "$@"; do
    path=${argument%%::*}
    if [ "$caller" != "$here" ] && [[ $argument != -* && $before != -[kmnoprW] && -e $caller/$path ]]; then
      argument=$(realpath --relative-to="$here" -- "$caller/$path")${argument#"$path"}
    fi
    arguments_from_top+=("$argument")
    before=$argument
  done
}

# Test files below files or folders; a test may be named behind a file.
files_below() {
  local path
  for path in "$@"; do
    path=${path%%::*}
    [ ! -e "$here/$path" ] || (cd "$here" && find "$path" -name '*.py' -type f)
  done | sort -u
}

# The test files that are for `./dev test --all` only: those with something from npm, a browser, a
# wheel, or machines of their own.
files_for_all() {
  local long='npm|browser|gcc12|machines|checks|readers'
  (cd "$here" && grep -lrE --include='*.py' "^# \./dev adds: .*\b($long)\b" tests)
}

run_tests() {
  local preset=$1
  shift
  build "$preset"
  say "testing $preset"
  # How the module is packed and what is made of it does not depend on the build.
  [ "$preset" = release ] || set -- "$@" --ignore=tests/package
  local allocator=debug
  # The sanitizer sees through the interpreter's own allocator only when that is out of the way.
  [ "$preset" != sanitize ] || allocator=malloc
  local look_for_leaks=1
  if [ "$preset" = sanitize ] && is_followed; then
    say 'NOT looked for leaks: that cannot be where proot follows each system call'
    look_for_leaks=0
  fi
  (cd "$here" && PYTHONMALLOC=$allocator PYTHONDONTWRITEBYTECODE=1 DATA_TABLES_BUILD=$preset \
    PYTHONPATH=$here python_of "$preset" -m pytest "$@")
}

# ./dev test [--all | ARGUMENTS]
test_command() {
  local preset=${DATA_TABLES_BUILD:-release} files file
  local parallel=(-q -n "$(nproc)" --dist=worksteal)
  if [ "${1:-}" = --all ]; then
    shift
    mapfile -t files < <(files_below tests)
    mapfile -t sets < <(sets_of_files "${files[@]}")
    local presets=(clang debug sanitize release)
    # A machine that has its own CPython 3.14 need not have the next one.
    if [ -n "${DATA_TABLES_ROOT:-}" ] || ! has_python || command -v python3.15 >/dev/null; then
      presets=(release315 debug315 "${presets[@]}") sets+=(python315)
    else
      say 'NOT tested with CPython 3.15: this machine has none'
    fi
    need tests clang debug "${sets[@]}"
    for preset in "${presets[@]}"; do
      run_tests "$preset" "${parallel[@]}" "$@"
    done
    return
  fi
  from_top "$@"
  set -- "${arguments_from_top[@]}"
  mapfile -t files < <(files_below "$@")
  if [ ${#files[@]} = 0 ]; then
    # Nothing is named: all but what is for --all.
    set -- "${parallel[@]}" "$@"
    while read -r file; do
      set -- "$@" --ignore="$file"
    done < <(files_for_all)
    mapfile -t files < <(files_below tests | grep -vxFf <(files_for_all))
  fi
  mapfile -t sets < <([ "$preset" != release ] || sets_of_files "${files[@]}")
  need tests $(sets_of_build "$preset") "${sets[@]}"
  run_tests "$preset" "$@"
}
