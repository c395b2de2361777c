# shellcheck shell=bash
# Sourced by `dev`: packages of other Debian suites and architectures, extracted into folders of the
# cache. Nothing in there is configured or installed: an emulator or a compiler looks into them.

# Where they are; a root sees the same folder.
export DATA_TABLES_SYSTEMS=${DATA_TABLES_SYSTEMS:-$cache/systems}

# Extracts packages and what they depend on, once, and sets `extracted` to the folder.
# Usage: extract_packages SUITE ARCHITECTURE PACKAGE...
extract_packages() {
  local key partial log
  key=$(printf '%s\n' "$@" "$(declare -f extract_packages)" | sha256sum)
  extracted=$DATA_TABLES_SYSTEMS/$1-$2-${key:0:12}
  shown+=("$extracted")
  [ ! -d "$extracted" ] || return 0
  [ -z "${DATA_TABLES_ROOT:-}" ] || fail "the root has no $extracted: run this outside of it"
  open_cache
  choose_way
  have_here mmdebstrap mmdebstrap
  if [ ! -d "$extracted" ]; then
    say "extracting packages of Debian $1 for $2 (some seconds, once): ${*:3}"
    mkdir -p "$DATA_TABLES_SYSTEMS"
    partial=$cache/system.partial log=$cache/system.log
    isolated / / -- mmdebstrap --quiet --variant=extract --architectures="$2" \
      '--aptopt=Acquire::Check-Valid-Until "false"' \
      --include="$(IFS=,; echo "${*:3}")" "$1" "$partial" >"$log" 2>&1 </dev/null 9>&- || {
      explain "$log"
      fail "nothing was extracted; the log is $log"
    }
    # What the packages of a configured system make: /lib is in /usr, and links lead into the system.
    local link folder
    for folder in "$partial"/usr/lib*; do
      [ -e "$partial/${folder##*/}" ] || ln -s "usr/${folder##*/}" "$partial/${folder##*/}"
    done
    find "$partial" -type l -lname '/*' | while read -r link; do
      ln -sfnr "$partial$(readlink "$link")" "$link"
    done
    mv -T "$partial" "$extracted"
    rm -f "$log"
  fi
  close_cache
}

# Sets `gcc12` to settings for a compiler and a C library that are older than those of most
# systems: what they build runs there.
provide_gcc12() {
  # The unwinder of GCC 12 asks glibc 2.35 where code is, that of GCC 11 does not.
  extract_packages bookworm "$(dpkg --print-architecture)" g++-12 libgcc-11-dev
  gcc12=(
    CXX="$(echo "$extracted"/usr/bin/*-linux-gnu*-g++-12)"
    # Debian's headers of Python include some by their triplet.
    CXXFLAGS="--sysroot=$extracted -idirafter /usr/include"
    # Its strip does not run here: the linker leaves out what it would.
    LDFLAGS="-s -L$(echo "$extracted"/usr/lib/gcc/*/11)"
  )
}
