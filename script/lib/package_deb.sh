# For script/package: the Debian package.

# Debian 12 has Node 18, which is too old for the server, so the package brings its own.
packagedNode=22.23.3

# nodeArchitecture: what the npm package with the program of Node is called for, here.
nodeArchitecture() {
  case "$(dpkg --print-architecture)" in
    amd64) echo x64 ;;
    arm64) echo arm64 ;;
    *) fail "there is no Node for $(dpkg --print-architecture)" ;;
  esac
}

makeDeb() {
  needs dpkg-deb dpkg-shlibdeps cmake ninja gzip strip
  local architecture stage deb
  architecture=$(dpkg --print-architecture)
  stage=$out/root
  deb=$out/tarqo-mcp_${version}_$architecture.deb
  rm -rf "$stage"
  stageHelper "$stage"
  buildServer
  stageServer "$stage/usr/lib/tarqo-mcp"
  stageDocuments "$stage/usr/share"
  install -D -m 755 packaging/tarqo-mcp.sh "$stage/usr/bin/tarqo-mcp"
  chmod -R u=rwX,go=rX "$stage"
  stageControl "$stage" "$architecture"
  SOURCE_DATE_EPOCH=$(git log -1 --format=%ct) \
    dpkg-deb --root-owner-group -Zxz --build "$stage" "$deb" >/dev/null
  rm -rf "$stage"
  made "$deb"
}

stageHelper() {
  cmake --preset release -B build/package -DTARQO_TESTS=OFF -DCMAKE_INSTALL_PREFIX=/usr >/dev/null
  cmake --build build/package --target tarqo-ax >&2
  DESTDIR=$root/$1 cmake --install build/package --strip --component Unspecified >/dev/null
}

# The server's files, the one library that is not in them, and Node.
stageServer() {
  local folder=$1 scratch node
  mkdir -p "$folder"
  cp -R mcp/dist "$folder/dist"
  # Its dependencies are in its files, but for those that the system has to load.
  node -e '
    const { name, version, type, engines, dependencies } = require("./mcp/package.json");
    const { sharp } = dependencies;
    console.log(JSON.stringify({ name, version, type, engines, dependencies: { sharp } }, null, 2));
  ' >"$folder/package.json"
  cp mcp/package-lock.json "$folder/"
  (cd "$folder" && npm install --omit=dev --ignore-scripts --no-audit --no-fund --loglevel=error) >&2
  # What only those need who build it, and where it was fetched.
  rm -rf "$folder/package-lock.json" "$folder/node_modules/.package-lock.json" \
    "$folder/node_modules/.bin" "$folder/node_modules/sharp/src" "$folder/node_modules/sharp/install"
  scratch=$(mktemp -d)
  npm install --prefix "$scratch" --no-audit --no-fund --loglevel=error \
    "node-linux-$(nodeArchitecture)@$packagedNode" >&2
  node=$scratch/node_modules/node-linux-$(nodeArchitecture)
  strip --strip-unneeded -o "$folder/node" "$node/bin/node"
  cp "$node/LICENSE" "$folder/LICENSE.node"
  rm -rf "$scratch"
}

stageDocuments() {
  local share=$1 doc=$1/doc/tarqo-mcp licence=" Not named by the project yet."
  install -D -m 644 docs/tarqo-mcp.1 "$share/man/man1/tarqo-mcp.1"
  gzip -9n "$share"/man/man1/*.1
  mkdir -p "$doc"
  gzip -9nc CHANGELOG.md >"$doc/changelog.gz"
  if [[ -f LICENSE ]]; then
    # Of a field with several lines each begins with a space, and an empty one has a full stop.
    licence=$(sed -e 's/^$/./' -e 's/^/ /' LICENSE)
  fi
  fill packaging/debian/copyright.in LICENSE="$licence" >"$doc/copyright"
}

stageControl() {
  local stage=$1 architecture=$2 size shlibs
  shlibs=$(librariesOf "$stage")
  size=$(du -sk "$stage" | cut -f 1)
  mkdir -p "$stage/DEBIAN"
  fill packaging/debian/control.in VERSION="$version" ARCHITECTURE="$architecture" SIZE="$size" \
    SHLIBS="$shlibs" MAINTAINER="${TARQO_MAINTAINER:-tarqo-ax <nobody@localhost>}" \
    >"$stage/DEBIAN/control"
  (cd "$stage" && find usr -type f -print0 | sort -z | xargs -0 md5sum) >"$stage/DEBIAN/md5sums"
}

# The packages whose libraries the programs and libraries of a root need, as a field has them.
librariesOf() {
  local stage=$root/$1 scratch found
  scratch=$(mktemp -d)
  mkdir "$scratch/debian"
  printf 'Source: tarqo-mcp\n\nPackage: tarqo-mcp\nArchitecture: any\n' >"$scratch/debian/control"
  found=$(find "$stage/usr/lib/tarqo-mcp/node_modules" -name '*.node' -o -name '*.so*')
  # The libraries of the package itself are in no other, which is no error.
  # shellcheck disable=SC2086,SC2046  # one word a file
  (cd "$scratch" && dpkg-shlibdeps -O --ignore-missing-info $(libraryFolders "$found") \
    -e"$stage/usr/bin/tarqo-ax" -e"$stage/usr/lib/tarqo-mcp/node" $found) \
    >"$scratch/found" 2>"$scratch/log" || { cat "$scratch/log" >&2; fail "dpkg-shlibdeps failed"; }
  sed -n 's/^shlibs:Depends=//p' "$scratch/found"
  rm -rf "$scratch"
}

# -lFOLDER for each folder with a library of the package's own.
libraryFolders() {
  local file
  for file in $1; do
    printf -- '-l%s\n' "${file%/*}"
  done | sort -u
}
