# shellcheck shell=bash
# Sourced by `dev`: the module on other architectures.

arches=(arm64 s390x riscv64 ppc64el armhf i386 wasm32)

# ./dev arches [ARCHITECTURE...]
arches_command() {
  local name sets=() named=()
  [ $# -gt 0 ] || set -- "${arches[@]}"
  for name in "$@"; do
    if [ "$name" = wasm32 ]; then
      npm_modules
      sets+=(to-wasm32) named+=(wasm32 emscripten "$DATA_TABLES_NPM/pyodide")
      continue
    fi
    [ -n "${triplet[$name]:-}" ] || fail "not one of ${arches[*]}: $name"
    extract_packages "$suite" "$name" python3.14-minimal libpython3.14-dev
    sets+=("to-$name") named+=("$name" "${triplet[$name]}" "$extracted")
  done
  need "${sets[@]}"
  build release
  tool_of release arches "${named[@]}"
}
