# shellcheck shell=bash
# Sourced by `dev`: the module on other architectures, and the wheels.

arches=(arm64 s390x riscv64 ppc64el armhf i386 wasm32)
declare -A headers

# Sets the folder in `headers` that has the interpreter of an architecture, and its headers.
provide_headers() {
  extract_packages "$suite" "$1" python3.14-minimal libpython3.14-dev
  headers[$1]=$extracted
}

# ./dev arches [ARCHITECTURE...]
arches_command() {
  local name named=()
  [ $# -gt 0 ] || set -- "${arches[@]}"
  for name in "$@"; do
    [[ " ${arches[*]} " = *" $name "* ]] || fail "not one of ${arches[*]}: $name"
  done
  need "${@/#/to-}"
  for name in "$@"; do
    case $name in
      wasm32) named+=(wasm32 emscripten "$DATA_TABLES_NPM/pyodide") ;;
      *) named+=("$name" "${triplet[$name]}" "${headers[$name]}") ;;
    esac
  done
  build release
  tool_of release arches "${named[@]}"
}

# ./dev wheel [--for ARCHITECTURE] [FOLDER]
wheel_command() {
  if [ "${1:-}" != --for ]; then
    need package gcc12
    build wheel
    tool_of wheel wheel "$@"
    return
  fi
  local name=${2:-} system compiler for
  if [ "$name" = wasm32 ]; then
    need package to-wasm32
    build release
    tool_of release wheel --for wasm32 "$DATA_TABLES_NPM/pyodide" "${@:3}"
    return
  fi
  [ -n "${triplet[$name]:-}" ] || fail "--for is followed by one of ${arches[*]}, not by ${name@Q}"
  for=${triplet[$name]}
  shift 2
  extract_packages "$suite" "$name" python3.14-minimal libpython3.14-dev
  system=$extracted
  # The same compiler and C library as for this machine; see provide_gcc12.
  extract_packages bookworm "$(dpkg --print-architecture)" "g++-12-${for//_/-}" \
    "libgcc-11-dev-$name-cross"
  compiler=$extracted
  need package "to-$name"
  build release
  # Assembler and linker take libraries of their own, and are those of the root.
  export CXX=$compiler/usr/bin/$for-g++-12
  export CXXFLAGS="--sysroot=$compiler -B/usr/$for/bin -idirafter $system/usr/include"
  export LDFLAGS="-s -L$compiler/usr/lib/gcc-cross/$for/11"
  tool_of release wheel --for "$name" "$system" "$@"
}
