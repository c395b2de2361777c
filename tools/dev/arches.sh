# shellcheck shell=bash
# Sourced by `dev`: the module on other architectures.

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
