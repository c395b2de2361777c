# Sourced by `dev`: a Debian root that has CPython 3.14, for machines that have not.

suite=forky
# A relative folder is ignored, as the rules for that variable have it.
case ${XDG_CACHE_HOME:-} in /*) cache=$XDG_CACHE_HOME ;; *) cache=${HOME:-/root}/.cache ;; esac
cache=$cache/data_tables
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
# Folders of /usr/share that the root goes without.
left_out=(doc info locale man)
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

# What of these sets is missing on this machine, which has CPython 3.14, a line each: the set, and
# the command or the Python module (with a dot in front).
missing_here() {
  local name item
  for name in "$@"; do
    for item in ${proof[$name]}; do
      case $item in
        .*) python3.14 -I -c "import ${item#.}" ;;
        *) command -v "$item" ;;
      esac >/dev/null 2>&1 || printf '%s %s\n' "$name" "$item"
    done
  done
}

# Whether this machine, which has CPython 3.14, has these sets as well, or its packages bring them.
complete_machine() {
  local missing wanted=() modules name item
  missing=$(missing_here "$@")
  [ -n "$missing" ] || return 0
  read -ra wanted -d '' < <(cut -d' ' -f1 <<<"$missing" | uniq |
    while read -r name; do printf '%s\n' "${packages[$name]}"; done) || true
  item=$(cut -d' ' -f2 <<<"$missing" | tr '\n' ' ')
  # Packages bring modules for the interpreter that is a package itself.
  modules=$(grep -c ' \.' <<<"$missing" || true)
  ! dpkg -S "$(readlink -f "$(command -v python3.14)")" >/dev/null 2>&1 || modules=0
  if [ "$(id -u)" != 0 ]; then
    fail "missing on this machine: ${item% }. As root this brings them, or \`dev\` makes a root that " \
      "has them: apt-get install ${wanted[*]}"
  fi
  if [ "$modules" = 0 ]; then
    open_cache
    if install_here "${wanted[@]}" && [ -z "$(missing_here "$@")" ]; then
      close_cache
      return 0
    fi
    close_cache
  fi
  say "the python3.14 of this machine is not used, but one in a root: it lacks ${item% }"
  return 1
}

# Lets the command see the folders that DATA_TABLES_SOURCES names, with colons between them.
show_sources() {
  local folder folders
  IFS=: read -ra folders <<<"$DATA_TABLES_SOURCES"
  for folder in "${folders[@]}"; do
    [ -d "$folder" ] || fail "DATA_TABLES_SOURCES: there is no folder $folder"
  done
  mapfile -t folders < <(readlink -f -- "${folders[@]}")
  shown+=("${folders[@]}")
  DATA_TABLES_SOURCES=$(IFS=:; echo "${folders[*]}")
}

root_folder() {
  local key
  key=$(printf '%s\n' "$suite" "${packages[base]}" "${root_options[@]}" "${left_out[@]}" | sha256sum)
  printf '%s\n' "$cache/root-$suite-${key:0:12}"
}

# Opens the cache for this process alone, until close_cache, and clears what a run that was ended
# has left there.
open_cache() {
  mkdir -p "$cache" && [ -w "$cache" ] || fail "$cache cannot be written"
  [ -O "$cache" ] || fail "$cache belongs to somebody else, who could change what is run from there"
  exec 9>"$cache/lock"
  flock -n 9 || { say "waiting for another run that changes $cache"; flock 9; }
  rm -rf --one-file-system "$cache"/*.partial*
}

close_cache() {
  exec 9>&-
}

# Installs packages on this machine itself; fails where that cannot be.
install_here() {
  local log=$cache/install.log
  [ "$(id -u)" = 0 ] && command -v apt-get >/dev/null || return
  say "installing on this machine: $*"
  { apt-get update && DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends \
    "$@"; } >"$log" 2>&1 </dev/null || { explain "$log"; return 1; }
}

# Says in a log's own words why a fetch or an installation has failed.
explain() {
  local words
  if words=$(grep -m2 -i 'no space left' "$1"); then
    say 'the disk is full:'
  elif words=$(grep -m2 -iE "failure resolving|could(n't| not) (resolve|connect)|unable to connect|\
network is unreachable|ENOTFOUND|EAI_AGAIN|ECONNREFUSED" "$1"); then
    say 'the network cannot be reached:'
  else
    words=$(tail -n 5 "$1")
    say 'that did not work; its log ends:'
  fi
  printf '%s\n' "$words" >&2
}

# Sees to a command, which the package named brings.
have_here() {
  command -v "$1" >/dev/null || install_here "$2" || fail "missing on this machine: $2"
}

# Sets `way` to how commands are run in a root, the best that this machine lets us:
#   namespaces  mounts and processes of their own, by bubblewrap
#   proot       follows every system call, which takes no privileges and more time
choose_way() {
  [ -z "${way:-}" ] || return 0
  local why
  have_here bwrap bubblewrap
  way=namespaces
  ! why=$(isolated / / -- true 2>&1) || return 0
  have_here proot proot
  way=proot
  proot -r / true >/dev/null 2>&1 ||
    fail "no root can be entered on this machine: namespaces: $why; proot does not run either"
  say "no namespaces here (${why#bwrap: }): proot takes their place, which is slower"
}

# Whether this runs by proot.
is_followed() { ! grep -q '^TracerPid:\s0$' /proc/self/status; }

# Runs a command that is killed, with all that it has started, when this script ends.
# shellcheck disable=SC2016 # for the shell in there
tethered=(setpriv --pdeathsig TERM setsid bash -c 'trap "kill -KILL 0" TERM; "$@" & wait $!' bash)

# Runs a command in a folder as its root, or in /. When it ends, or this script is ended, nothing of
# it is left running. Usage: isolated ROOT FOLDER PATH... -- COMMAND...: it works in FOLDER and sees
# the paths beside what is in the root.
isolated() {
  local root=$1 folder=$2 names path paths=() settings=() runner
  shift 2
  while [ "$1" != -- ]; do
    paths+=("$1")
    shift
  done
  shift
  names=$(readlink -f /etc/resolv.conf)
  # Not the caller's home, where anybody may have put something for the interpreter to start with.
  [ "$root" = / ] || settings=(
    -u XDG_CACHE_HOME HOME=/root PYTHONNOUSERSITE=1 PATH=/usr/bin:/usr/sbin LC_ALL=C.UTF-8)
  if [ "$way" = namespaces ]; then
    runner=("$(command -v bwrap)" --die-with-parent --unshare-pid --dev-bind "$root" /
      --proc /proc)
    [ "$root" = / ] || runner+=(
      --dev-bind /dev /dev --ro-bind /sys /sys --ro-bind-try "$names" /etc/resolv.conf)
    for path in "${paths[@]}"; do
      # What is in the cache is not changed from in there.
      case $path in "$cache"/*) runner+=(--ro-bind) ;; *) runner+=(--bind) ;; esac
      runner+=("$path" "$path")
    done
    runner+=(--chdir "$folder")
  elif [ ${#paths[@]} -gt 0 ]; then
    # On this signal it ends all that runs in it.
    runner=(setpriv --pdeathsig QUIT "$(command -v proot)" -r "$root" -w "$folder"
      -b /proc -b /dev -b /sys -b "$names:/etc/resolv.conf" "${paths[@]/#/--bind=}")
    ! proot --help | grep -q -e --kill-on-exit || runner+=(--kill-on-exit)
  else
    # Nothing but the root is seen: that takes no proot.
    runner=("${tethered[@]}")
    if [ "$root" != / ]; then
      cp -L "$names" "$root/etc/resolv.conf" || true
      runner+=(chroot "$root")
    fi
  fi
  env "${settings[@]}" "${runner[@]}" "$@"
}

make_root() {
  local root=$1 partial=$1.partial log=$1.log excludes
  excludes=$(printf 'path-exclude=/usr/share/%s/*\\n' "${left_out[@]}")
  say "making a root with CPython 3.14 from Debian $suite in $root (about a minute, once)"
  # Twice, for networks that stumble.
  for _ in 1 2; do
    rm -rf --one-file-system "$partial"
    if isolated / / -- mmdebstrap --quiet "${root_options[@]}" --include="${packages[base]// /,}" \
      --essential-hook="printf '$excludes' >\"\$1/etc/dpkg/dpkg.cfg.d/left_out\"" \
      "$suite" "$partial" >"$log" 2>&1 </dev/null && [ -x "$partial/usr/bin/python3.14" ]; then
      chmod 700 "$partial/root"
      mkdir "$partial/var/lib/data_tables"
      mv -T "$partial" "$root"
      rm -f "$log"
      return
    fi
    explain "$log"
    ! grep -qi 'no space left' "$log" || break
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
  isolated "$root" / -- sh -c '
    export DEBIAN_FRONTEND=noninteractive
    add() { apt-get install -y --no-install-recommends "$@"; }
    dpkg --configure -a
    add "$@" || { apt-get update && apt-get -y --fix-broken install && add "$@"; } || exit
    apt-get clean' sh "${wanted[@]}" >"$log" 2>&1 </dev/null || {
    explain "$log"
    fail "nothing was added; the log is $log. To start anew, remove $root"
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
  local sets=() missing root folder=$caller path paths=(/tmp)
  while [ "$1" != -- ]; do
    sets+=("$1")
    shift
  done
  shift
  root=$(root_folder)
  open_cache
  choose_way
  if [ ! -d "$root" ]; then
    have_here mmdebstrap mmdebstrap
    make_root "$root"
  fi
  mapfile -t missing < <(lacking "$root" "${sets[@]}")
  [ ${#missing[@]} = 0 ] || extend_root "$root" "${missing[@]}"
  close_cache
  for path in "$caller" "$here" "${shown[@]}" "${DATA_TABLES_NPM:-/tmp}"; do
    case $path/ in
      /usr/* | /etc/* | /dev/* | /proc/* | /sys/* | //)
        [ "$path" = "$caller" ] || fail "move it elsewhere: $path"
        folder=/
        ;;
      *) paths+=("$path") ;;
    esac
  done
  # An interrupt is for the command in there, which may go on after it.
  trap '' INT QUIT
  DATA_TABLES_ROOT=$root TMPDIR=/tmp isolated "$root" "$folder" "${paths[@]}" -- \
    env --default-signal=INT,QUIT bash "$here/dev" "$@"
  exit
}

# The interpreter and the tools, and the root that they are in.
print_versions() {
  local root=${DATA_TABLES_ROOT:-} tool
  for tool in python3.14 python3.14-dbg c++ clang++ clang-tidy cmake ninja; do
    ! command -v "$tool" >/dev/null ||
      printf '%s: %s\n' "$tool" "$("$tool" --version | grep -m1 '[0-9]\.[0-9]')"
  done
  [ -n "$root" ] || return 0
  printf 'root: %s, Debian %s of %s\n' "$root" "$suite" \
    "$(sed -n 's/^Date: //p' "/var/lib/apt/lists/"*"_${suite}_InRelease")"
  # The packages of the sets that were added, without those that they depend on.
  # shellcheck disable=SC2016 # for dpkg-query
  cat /var/lib/data_tables/* <(echo "${packages[base]}") | tr ' ' '\n' | sort -u |
    xargs dpkg-query --show --showformat='${Package} ${Version}\n'
}
