#!/usr/bin/env bash
# For script/package: installs the Debian package into a clean root and uses it there.
#
#   check_deb.sh FILE.deb
#
# The root is made by debootstrap from where this system gets its packages, and is gone afterwards.
# What runs in it runs in a mount and process namespace of its own, as a user without rights.
set -euo pipefail

if [[ ${1:-} != --inside ]]; then
  deb=$(readlink -f "$1")
  [[ -f $deb ]] || { echo "check: there is no $1: script/package deb" >&2; exit 1; }
  [[ $(id -u) -eq 0 ]] || { echo "check: only root makes a root" >&2; exit 1; }
  command -v debootstrap >/dev/null || { echo "check: needs debootstrap" >&2; exit 1; }
  scratch=$(mktemp -d)
  trap 'rm -rf "$scratch"' EXIT
  # Mounts and processes in it end with the namespaces.
  unshare --mount --pid --fork --kill-child "$0" --inside "$deb" "$scratch/root"
  exit
fi

deb=$2
clean=$3
. /etc/os-release
# The first mirror that this system itself uses.
mirror=$(apt-get indextargets --format '$(SITE) $(RELEASE)' |
  awk -v release="$VERSION_CODENAME" '$2 == release { print $1; exit }')

step() {
  printf '== %s\n' "$*"
}

step "a clean $PRETTY_NAME"
debootstrap --variant=minbase "$VERSION_CODENAME" "$clean" "$mirror" >"$clean.log" 2>&1 ||
  { tail -n 20 "$clean.log" >&2; exit 1; }
mount --make-rprivate /
mount -t proc none "$clean/proc"
mount -t tmpfs none "$clean/dev/shm"
cp /etc/resolv.conf "$clean/etc/"
cp -R /etc/apt/apt.conf.d/. "$clean/etc/apt/apt.conf.d/"
printf '#!/bin/sh\nexit 101\n' >"$clean/usr/sbin/policy-rc.d"
chmod +x "$clean/usr/sbin/policy-rc.d"
cp "$deb" "$clean/tmp/package.deb"
cp "${0%/*}/check_deb.py" "$clean/tmp/"

within() {
  chroot "$clean" /usr/bin/env -i HOME=/root PATH=/usr/sbin:/usr/bin:/sbin:/bin LANG=C.UTF-8 \
    DEBIAN_FRONTEND=noninteractive "$@"
}

step "install the package"
within apt-get -qq update
within apt-get -qq -y -o Dpkg::Use-Pty=0 install /tmp/package.deb >"$clean.log" 2>&1 ||
  { tail -n 20 "$clean.log" >&2; exit 1; }
within useradd --create-home somebody

step "use it"
within setpriv --reuid somebody --regid somebody --clear-groups env HOME=/home/somebody \
  python3 /tmp/check_deb.py

step "remove it"
within apt-get -qq -y -o Dpkg::Use-Pty=0 purge tarqo-mcp >/dev/null
left=$(within find /usr -path '*tarqo*')
[[ -z $left ]] || { printf 'check: left behind:\n%s\n' "$left" >&2; exit 1; }
step "all of it works"
