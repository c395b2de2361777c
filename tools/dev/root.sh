# Sourced by `dev`: a Debian root that has CPython 3.14, for machines that have not.

suite=forky
cache=${XDG_CACHE_HOME:-${HOME:-/root}/.cache}/data_tables
root_options=(
  --variant=apt
  # What is fetched later shall fit to what is there: the package lists stay.
  --skip=cleanup/apt/lists
  # A mirror may be frozen or behind. Its index is signed all the same; it is only no longer fresh.
  '--aptopt=Acquire::Check-Valid-Until "false"'
  '--aptopt=Acquire::Languages "none"'
  # The root can be made anew: waiting for the disk after each file would take most of the time.
  --dpkgopt=force-unsafe-io
)
unread=(doc info locale man)
# Files and folders that the command is to see beside its own.
shown=()

# Lets the command see those of its arguments that are files or folders. It shall call them as
# `named` does: links are not seen.
show_files() {
  local path real
  named=()
  for path in "$@"; do
    if [ -e "$path" ]; then
      real=$(readlink -f -- "$path")
      shown+=("$real")
      [ "$real" = "$(realpath -s -- "$path")" ] || path=$real
    fi
    named+=("$path")
  done
}

has_python() {
  command -v python3.14 >/dev/null &&
    python3.14 -I -c 'import os, sys, sysconfig
sys.exit(not os.path.exists(os.path.join(sysconfig.get_path("include"), "Python.h")))'
}

root_folder() {
  local key
  key=$(printf '%s\n' "$suite" "${packages[base]}" "${root_options[@]}" "${unread[@]}" | sha256sum)
  printf '%s\n' "$cache/root-$suite-${key:0:12}"
}

# Opens the cache for this process alone, until close_cache, and clears what a run that was ended
# has left there.
open_cache() {
  mkdir -p "$cache"
  [ -O "$cache" ] || fail "$cache belongs to somebody else, who could change what is run from there"
  exec 9>"$cache/lock"
  flock -n 9 || { say "waiting for another run that changes $cache"; flock 9; }
  rm -rf --one-file-system "$cache"/*.partial*
}

close_cache() {
  exec 9>&-
}

# Installs packages on this machine itself.
install_here() {
  local log=$cache/install.log
  if [ "$(id -u)" != 0 ] || ! command -v apt-get >/dev/null; then
    fail "missing on this machine: $*"
  fi
  say "installing on this machine: $*"
  { apt-get update && apt-get install -y --no-install-recommends "$@"; } >"$log" 2>&1 </dev/null ||
    { tail -n 20 "$log" >&2; fail "apt-get cannot install $*; the log is $log"; }
}

# Runs a command in a folder as its root, or in /, with mounts and processes of its own: when the
# command ends, or this script is ended, nothing of either is left.
isolated() {
  local root=$1
  shift
  local options=(--die-with-parent --unshare-pid --dev-bind "$root" /)
  [ "$root" = / ] || options+=(
    --dev-bind /dev /dev --ro-bind /sys /sys
    --ro-bind-try "$(readlink -f /etc/resolv.conf)" /etc/resolv.conf
    # Not /tmp, where anybody may put something for the interpreter to start with.
    --setenv HOME /root --setenv PYTHONNOUSERSITE 1 --unsetenv XDG_CACHE_HOME
    --setenv PATH /usr/bin:/usr/sbin --setenv LC_ALL C.UTF-8
  )
  bwrap "${options[@]}" --proc /proc "$@"
}

# What makes roots, on this machine itself.
have_makers() {
  local missing=()
  command -v mmdebstrap >/dev/null || missing+=(mmdebstrap)
  command -v bwrap >/dev/null || missing+=(bubblewrap)
  [ ${#missing[@]} = 0 ] || install_here "${missing[@]}"
}

make_root() {
  local root=$1 partial=$1.partial log=$1.log unwanted
  unwanted=$(printf 'path-exclude=/usr/share/%s/*\\n' "${unread[@]}")
  say "making a root with CPython 3.14 from Debian $suite in $root (about a minute, once)"
  # Twice, for networks that stumble.
  for _ in 1 2; do
    rm -rf --one-file-system "$partial"
    if isolated / mmdebstrap --quiet "${root_options[@]}" --include="${packages[base]// /,}" \
      --essential-hook="printf '$unwanted' >\"\$1/etc/dpkg/dpkg.cfg.d/unread\"" \
      "$suite" "$partial" >"$log" 2>&1 </dev/null && [ -x "$partial/usr/bin/python3.14" ]; then
      chmod 700 "$partial/root"
      mkdir "$partial/var/lib/data_tables"
      mv -T "$partial" "$root"
      rm -f "$log"
      return
    fi
    say "that did not work; its log ends:"
    tail -n 5 "$log" >&2
  done
  rm -rf --one-file-system "$partial"
  fail "no root could be made; the log is $log"
}

# Adds sets to a root. A set counts as added when that has ended well; one that was interrupted is
# completed here.
extend_root() {
  local root=$1 log=$1.log name wanted=()
  shift
  for name in "$@"; do
    say "adding to the root: $name, ${purpose[$name]}"
    read -ra wanted -d '' <<<"${wanted[*]} ${packages[$name]}" || true
  done
  # shellcheck disable=SC2016 # for the shell in there
  isolated "$root" --setenv DEBIAN_FRONTEND noninteractive sh -c '
    add() { apt-get install -y --no-install-recommends "$@"; }
    dpkg --configure -a
    add "$@" || { apt-get update && apt-get -y --fix-broken install && add "$@"; } || exit
    apt-get clean' sh "${wanted[@]}" >"$log" 2>&1 </dev/null || {
    tail -n 20 "$log" >&2
    fail "that did not work; the log is $log. To start anew, remove $root"
  }
  for name in "$@"; do
    printf '%s\n' "${packages[$name]}" >"$root/var/lib/data_tables/$name"
  done
  rm -f "$log"
}

# The sets among those named that a root lacks, or holds with other packages.
lacking() {
  local root=$1 name
  shift
  for name in "$@"; do
    [ "$(cat "$root/var/lib/data_tables/$name" 2>/dev/null)" = "${packages[$name]}" ] ||
      printf '%s\n' "$name"
  done
}

# Runs `dev` with these arguments in a root that has these sets. Does not return.
# Usage: enter_root SET... -- ARGUMENT...
enter_root() {
  local sets=() missing root
  while [ "$1" != -- ]; do
    sets+=("$1")
    shift
  done
  shift
  [ "$(id -u)" = 0 ] ||
    fail 'there is no python3.14 with headers on the PATH, and making a root that has it needs root'
  root=$(root_folder)
  open_cache
  have_makers
  [ -d "$root" ] || make_root "$root"
  mapfile -t missing < <(lacking "$root" "${sets[@]}")
  [ ${#missing[@]} = 0 ] || extend_root "$root" "${missing[@]}"
  close_cache
  local options=(--bind /tmp /tmp --setenv TMPDIR /tmp --setenv DATA_TABLES_ROOT "$root")
  case $caller/ in
    /usr/* | /etc/* | /dev/* | /proc/* | /sys/* | //) options+=(--chdir /) ;;
    *) options+=(--bind "$caller" "$caller" --chdir "$caller") ;;
  esac
  options+=(--bind "$here" "$here")
  local path
  for path in "${shown[@]}"; do
    case $path/ in
      /usr/* | /etc/* | /dev/* | /proc/* | /sys/* | //) fail "move it elsewhere: $path" ;;
      *) options+=(--bind "$path" "$path") ;;
    esac
  done
  [ -z "${DATA_TABLES_NPM:-}" ] || options+=(--ro-bind "$DATA_TABLES_NPM" "$DATA_TABLES_NPM")
  # An interrupt is for the command in there, which may go on after it.
  trap '' INT QUIT
  isolated "$root" "${options[@]}" env --default-signal=INT,QUIT "$here/dev" "$@"
  exit
}

# The interpreter and the tools, and the root that they are in.
tell_versions() {
  local root=${DATA_TABLES_ROOT:-} tool
  if [ -n "$root" ]; then
    printf 'root: %s, Debian %s of %s, with: base %s\n' "$root" "$suite" \
      "$(sed -n 's/^Date: //p' "/var/lib/apt/lists/"*"_${suite}_InRelease")" \
      "$(cd /var/lib/data_tables && echo *)"
  fi
  for tool in python3.14 python3.14-dbg c++ clang++ clang-tidy cmake ninja; do
    ! command -v "$tool" >/dev/null ||
      printf '%s: %s\n' "$tool" "$("$tool" --version | grep -m1 '[0-9]\.[0-9]')"
  done
}
