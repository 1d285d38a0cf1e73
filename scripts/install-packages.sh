#!/usr/bin/env bash
# Installs the packages of packages-build.txt and packages-checks.txt that this machine lacks; with --build
# those of the first alone. With all there it does nothing, so it can stand in front of every build.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

lists=("$here/packages-build.txt")
[ "${1:-}" = --build ] || lists+=("$here/packages-checks.txt")
mapfile -t wanted < <(grep -hv '^#' "${lists[@]}")

missing=()
for package in "${wanted[@]}"; do
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null)" = installed ] || missing+=("$package")
done
[ ${#missing[@]} -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || {
    echo "These packages are missing, and there is no sudo to install them with: ${missing[*]}" >&2
    echo "Install them as root (apt-get install ${missing[*]}), then run this again." >&2
    exit 1
  }
  as_root=(sudo)
fi
echo "installing: ${missing[*]}" >&2
"${as_root[@]}" apt-get update -qq >&2
"${as_root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -qq --no-install-recommends \
  "${missing[@]}" >&2
