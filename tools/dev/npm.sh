# Sourced by `dev`: what the tools and the tests take from npm.

# Installs what package.json lists, once for each package-lock.json, and sets DATA_TABLES_NPM to
# where it is. Done outside of the root, with the settings that npm has on this machine.
npm_modules() {
  local key folder log
  if [ -n "${DATA_TABLES_ROOT:-}" ]; then
    [ -n "${DATA_TABLES_NPM:-}" ] || fail 'the root lacks what is from npm: run this outside of it'
    return
  fi
  key=$(cat "$here/package.json" "$here/package-lock.json" | sha256sum)
  folder=$cache/npm-${key:0:12} log=$cache/npm.log
  if [ ! -d "$folder" ]; then
    open_cache
    if [ ! -d "$folder" ]; then
      have_here npm npm
      say 'fetching the packages of package-lock.json'
      mkdir "$folder.partial"
      cp "$here/package.json" "$here/package-lock.json" "$folder.partial"
      (cd "$folder.partial" && exec "${tethered[@]}" \
        npm ci --ignore-scripts --no-audit --no-fund) >"$log" 2>&1 </dev/null || {
        explain "$log"
        rm -rf "$folder.partial"
        fail "npm cannot install the packages; the log is $log"
      }
      mv -T "$folder.partial" "$folder"
      rm -f "$log"
    fi
    close_cache
  fi
  export DATA_TABLES_NPM=$folder/node_modules
}
