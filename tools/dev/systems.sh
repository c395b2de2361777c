# shellcheck shell=bash
# Sourced by `dev`: packages of other Debian suites and architectures, extracted into folders of the
# cache. Nothing in there is configured or installed: an emulator or a compiler looks into them.

# Where they are; a root sees the same folder.
export DATA_TABLES_SYSTEMS=${DATA_TABLES_SYSTEMS:-$cache/systems}

# Extracts packages and what they depend on, once, and sets `system` to the folder.
# Usage: extract_system SUITE ARCHITECTURE PACKAGE...
extract_system() {
  local key partial log
  key=$(printf '%s\n' "$@" "$(declare -f extract_system)" | sha256sum)
  system=$DATA_TABLES_SYSTEMS/$1-$2-${key:0:12}
  shown+=("$system")
  [ ! -d "$system" ] || return 0
  [ -z "${DATA_TABLES_ROOT:-}" ] || fail "the root has no $system: run this outside of it"
  open_cache
  have_makers
  if [ ! -d "$system" ]; then
    say "extracting packages of Debian $1 for $2 (some seconds, once): ${*:3}"
    mkdir -p "$DATA_TABLES_SYSTEMS"
    partial=$cache/system.partial log=$cache/system.log
    isolated / mmdebstrap --quiet --variant=extract --architectures="$2" \
      '--aptopt=Acquire::Check-Valid-Until "false"' \
      --include="$(IFS=,; echo "${*:3}")" "$1" "$partial" >"$log" 2>&1 </dev/null 9>&- || {
      tail -n 5 "$log" >&2
      fail "that did not work; the log is $log"
    }
    # What the packages of a configured system make: /lib is in /usr, and links lead into the system.
    local link folder
    for folder in "$partial"/usr/lib*; do
      [ -e "$partial/${folder##*/}" ] || ln -s "usr/${folder##*/}" "$partial/${folder##*/}"
    done
    find "$partial" -type l -lname '/*' | while read -r link; do
      ln -sfnr "$partial$(readlink "$link")" "$link"
    done
    mv -T "$partial" "$system"
    rm -f "$log"
  fi
  close_cache
}

# Sets `old_compiler` to settings for a compiler and a C library that are older than those of most
# systems: what they build runs there. On a machine with its own CPython 3.14 nothing is set: who
# keeps that machine knows what it is for.
old_compiler() {
  old_compiler=()
  [ -n "${DATA_TABLES_ROOT:-}" ] || ! has_python || return 0
  # The unwinder of GCC 12 asks glibc 2.35 where code is, that of GCC 11 does not.
  extract_system bookworm "$(dpkg --print-architecture)" g++-12 libgcc-11-dev
  old_compiler=(
    CXX="$(echo "$system"/usr/bin/*-linux-gnu*-g++-12)"
    # Debian's headers of Python include some by their triplet.
    CXXFLAGS="--sysroot=$system -idirafter /usr/include"
    LDFLAGS="-L$(echo "$system"/usr/lib/gcc/*/11)"
  )
}
