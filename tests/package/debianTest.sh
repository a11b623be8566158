#!/usr/bin/env bash
# Installs Debian packages into a root folder of their own, uses what they bring, and removes them again.
#
#     debianTest.sh FOLDER    with the packages in it
#
# Nothing of this machine is changed; whether it could install them, apt is only asked. Needs to be root, or to be
# allowed a user namespace.
set -euo pipefail
here=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")
packages=("$(realpath -e -- "$1")"/*.deb)
if ((EUID != 0)); then exec unshare --map-root-user bash "${BASH_SOURCE[0]}" "$@"; fi
root=$(mktemp -d -t foundation-debian.XXXXXXXX)
trap 'rm -rf -- "$root"' EXIT
fail() { printf '%s\n' "$*" >&2; exit 1; }

# What the packages' scripts call has to stay below the root, too.
mkdir -p "$root/tools" "$root/etc" "$root"/var/lib/dpkg/{info,updates,triggers}
touch "$root/var/lib/dpkg/status"
printf '#!/bin/sh\nexec /sbin/ldconfig -r "$DPKG_ROOT"\n' >"$root/tools/ldconfig"
chmod +x "$root/tools/ldconfig"
inside() { # inside OPTION...: dpkg for this root, in which nothing else is installed
  PATH="$root/tools:$PATH" dpkg --root="$root" --log=/dev/null --force-script-chrootless --force-depends "$@"
}

apt-get install --simulate --no-install-recommends "${packages[@]}" >/dev/null ||
  fail 'apt cannot find what the packages need'
inside --install "${packages[@]}" 2>&1
mapfile -t names < <(for package in "${packages[@]}"; do dpkg-deb --field "$package" Package; done)
for name in "${names[@]}"; do
  [[ $(inside --status "$name") == *'install ok installed'* ]] || fail "$name is not installed"
done
[[ $(/sbin/ldconfig -r "$root" -p) == *libfoundation-storage.so.0* ]] || fail 'the loader would not find the libraries'
for way in command find-package readme pkg-config; do
  printf '%s\n' "-- $way"
  bash "$here/packageTest.sh" "$way" "$root/usr" --system
done
inside --purge "${names[@]}" 2>&1
[[ ! -e $root/usr ]] || fail "the packages leave behind: $(find "$root/usr")"
