# Sourced by `dev`: the builds, each in its folder below build/.

builds=(release clang debug sanitize wheel release315 debug315)

# Sets of packages that a build asks for, beside the base.
sets_of_build() {
  case $1 in
    clang | debug) printf '%s\n' "$1" ;;
    wheel) echo gcc12 ;;
    *315) echo python315 ;;
  esac
}

# The compiler of a build, and what it is called with.
compiler_of() {
  if [ "$1" = clang ]; then echo clang++; else printf '%s\n' "${CXX:-c++}"; fi
}

# What a build is made by: of another tree, by other tools or with other flags it is made anew.
makers_of() {
  local compiler python
  read -ra compiler < <(compiler_of "$1")
  # By its full path: CMake takes a bare name for the first interpreter that it finds.
  python=$(command -v "$(interpreter_of "$1")")
  printf '%s\n' "$python" "$here" "${compiler[*]}" "${CXXFLAGS:-}" "${LDFLAGS:-}"
  "$python" -VV
  "${compiler[@]}" --version || fail "the compiler does not run: ${compiler[*]}"
}

# Whether a build that nobody can change has nothing to change.
is_current() {
  local folder=$1
  [ "$2" = "$(cat "$folder/made_by" 2>/dev/null)" ] &&
    ninja -C "$folder" -n 2>/dev/null | grep -q 'no work to do' &&
    (cd "$here" && sha256sum --check --status "$folder/installed.sum" 2>/dev/null)
}

# Installs a build into its folder `installed`, by content and file by file, each in one step: CMake
# would compare times in whole seconds, and other commands may be using what is there.
install_build() {
  local folder=$1 file fresh strip=()
  grep -q '^CMAKE_BUILD_TYPE:STRING=Debug$' "$folder/CMakeCache.txt" || strip=(--strip)
  rm -rf "$folder/fresh"
  cmake --install "$folder" --prefix "$folder/fresh" "${strip[@]}" || return
  mkdir -p "$folder/installed"
  fresh=$(cd "$folder/fresh" && find . -type f)
  while read -r file; do
    cmp -s "$folder/fresh/$file" "$folder/installed/$file" && continue
    mkdir -p "$folder/installed/${file%/*}"
    mv -T "$folder/fresh/$file" "$folder/installed/$file" || return
  done <<<"$fresh"
  # What an earlier state of the tree has installed and this one does not goes.
  (cd "$folder/installed" && find . -type f | grep -vxFf <(cat <<<"$fresh") |
    xargs -r -d '\n' rm -f) || true
  rm -rf "$folder/fresh"
  (cd "$here" && find "${folder#"$here"/}"/{installed,marlune} marlune -type f -exec sha256sum {} +) \
    >"$folder/installed.sum"
}

# Builds a preset where it is out of date and installs it into its folder `installed`.
build() {
  local preset=$1 folder=$here/build/$1 log=$here/build/$1.log makers
  local flags="${CXX:+ CXX=$CXX}${CXXFLAGS:+ CXXFLAGS=$CXXFLAGS}${LDFLAGS:+ LDFLAGS=$LDFLAGS}"
  [ "$preset" != wheel ] || [ ${#gcc12[@]} = 0 ] || local -x "${gcc12[@]}"
  [ ! -L "$here/build" ] && [ ! -L "$folder" ] ||
    fail "$folder is reached by a link: what is there may be another tree's, and would be removed"
  makers=$(makers_of "$preset") || exit
  if ! mkdir -p "$folder" 2>/dev/null || [ ! -w "$folder" ]; then
    is_current "$folder" "$makers" ||
      fail "nothing can be written to $folder, and $preset is not up to date"
    return
  fi
  # One at a time; released when all who have inherited it have ended.
  exec 8<"$folder"
  flock -n 8 || { say "waiting for another run that builds $preset"; flock 8; }
  if [ ! -f "$folder/build.ninja" ] || [ "$makers" != "$(cat "$folder/made_by" 2>/dev/null)" ]; then
    [ -e "$folder/made_by" ] || [ -e "$folder/CMakeCache.txt" ] || [ -z "$(ls -A "$folder")" ] ||
      fail "$folder holds something else than a build: move it away"
    say "configuring $preset${flags:+ with$flags}"
    find "$folder" -mindepth 1 -delete
    : >"$folder/made_by"
    (cd "$here" && cmake --preset "$preset" -DPython_EXECUTABLE="${makers%%$'\n'*}") \
      >"$log" 2>&1 || { cat "$log" >&2; fail 'cmake failed'; }
    printf '%s\n' "$makers" >"$folder/made_by"
  fi
  ninja -C "$folder" -n 2>/dev/null | grep -q 'no work to do' || say "building $preset"
  { cmake --build "$folder" && install_build "$folder"; } >"$log" 2>&1 ||
    { cat "$log" >&2; fail "building $preset failed"; }
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
    wheel) settings+=("${gcc12[@]}") ;;
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
