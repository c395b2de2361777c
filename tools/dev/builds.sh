# Sourced by `dev`: the builds, each in its folder below build/.

builds=(release clang debug sanitize wheel release315 debug315)

# Sets of packages that a build asks for, beside the base.
sets_of_build() {
  case $1 in
    clang | debug) printf '%s\n' "$1" ;;
    wheel) echo old_compiler ;;
    *315) echo python315 ;;
  esac
}

# Whether a build that nobody can change has nothing to change.
is_current() {
  local folder=$1 file
  ninja -C "$folder" -n 2>/dev/null | grep -q 'no work to do' || return 1
  for file in "$folder"/installed/marlune/tables/*; do
    cmp -s "$file" "$folder/marlune/tables/${file##*/}" ||
      cmp -s "$file" "$here/marlune/tables/${file##*/}" || return 1
  done
}

# Builds a preset where it is out of date and installs it into its folder `installed`.
build() {
  local preset=$1 folder=$here/build/$1 log=$here/build/$1.log
  if ! mkdir -p "$folder" 2>/dev/null || [ ! -w "$folder" ]; then
    is_current "$folder" || fail "nothing can be written to $folder, and $preset is not up to date"
    return
  fi
  # By its full path: CMake takes a bare name for the first interpreter that it finds.
  local python tools
  python=$(command -v "$(interpreter_of "$preset")")
  [ "$preset" != wheel ] || [ ${#old_compiler[@]} = 0 ] || local -x "${old_compiler[@]}"
  # One at a time; released when all who have inherited it have ended.
  exec 8<"$folder"
  flock -n 8 || { say "waiting for another run that builds $preset"; flock 8; }
  # What was made by other tools is made anew.
  tools=$(printf '%s\n' "$python" "${CXX:-c++}"; "$python" -VV; "${CXX:-c++}" --version)
  if [ ! -f "$folder/build.ninja" ] || [ "$tools" != "$(cat "$folder/made_by" 2>/dev/null)" ]; then
    say "configuring $preset"
    find "$folder" -mindepth 1 -delete
    (cd "$here" && cmake --preset "$preset" -DPython_EXECUTABLE="$python") >"$log" 2>&1 ||
      { cat "$log" >&2; fail 'cmake failed'; }
    printf '%s\n' "$tools" >"$folder/made_by"
  fi
  ninja -C "$folder" -n 2>/dev/null | grep -q 'no work to do' || say "building $preset"
  { cmake --build "$folder" && cmake --install "$folder" --prefix "$folder/installed"; } \
    >"$log" 2>&1 || { cat "$log" >&2; fail "building $preset failed"; }
  # What an earlier state of the tree has installed and this one does not goes.
  find "$folder/installed" -type f | grep -vxFf "$folder/install_manifest.txt" |
    xargs -r -d '\n' rm -f || true
  exec 8<&-
}

interpreter_of() {
  case $1 in
    debug) echo python3.14-dbg ;;
    release315) echo python3.15 ;;
    debug315) echo python3.15-dbg ;;
    *) echo python3.14 ;;
  esac
}

# Runs a module of tools/ with a build. Neither the caller's folder nor his PYTHONPATH is searched.
tool_of() {
  local preset=$1 module=$2
  shift 2
  PYTHONPATH=$here python_of "$preset" -P -m "tools.$module" "$@"
}

# Runs the interpreter of a build with the module installed by it.
python_of() {
  local preset=$1 python
  python=$(interpreter_of "$1")
  shift
  local settings=(PYTHONPATH="$here/build/$preset/installed${PYTHONPATH:+:$PYTHONPATH}")
  case $preset in
    wheel) settings+=("${old_compiler[@]}") ;;
    sanitize)
      # The interpreter itself leaves much behind at its end: only tests look for leaks.
      settings+=(
        LD_PRELOAD="$(g++ -print-file-name=libasan.so) $(g++ -print-file-name=libstdc++.so)"
        ASAN_OPTIONS="detect_leaks=${look_for_leaks:-0}:allocator_may_return_null=1:${ASAN_OPTIONS:-}"
        LSAN_OPTIONS="suppressions='$here/tests/leaks.supp':print_suppressions=0"
        UBSAN_OPTIONS=print_stacktrace=1
      ) ;;
  esac
  env "${settings[@]}" "$python" "$@"
}
