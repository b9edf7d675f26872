#!/usr/bin/env bash
# Installs the Debian packages of packages.txt that are missing. Asks for root
# only when there are any; does nothing on a system without dpkg.
set -euo pipefail

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)

if ! command -v dpkg-query >/dev/null; then
    echo "setup: not a Debian system; please install the like of $here/packages.txt" >&2
    exit 0
fi

missing=()
while read -r package; do
    case "$package" in '' | '#'*) continue ;; esac
    status=$(dpkg-query -W -f='${db:Status-Status}' "$package" 2>/dev/null || true)
    [ "$status" = installed ] || missing+=("$package")
done <"$here/packages.txt"
[ "${#missing[@]}" -gt 0 ] || exit 0

root=()
if [ "$(id -u)" -ne 0 ]; then
    if ! command -v sudo >/dev/null; then
        echo "setup: error: run as root once: apt-get install ${missing[*]}" >&2
        exit 1
    fi
    root=(sudo)
fi

echo "setup: installing ${missing[*]}"
apt=("${root[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -q -o Acquire::Retries=3)
"${apt[@]}" update </dev/null
"${apt[@]}" install -y --no-install-recommends "${missing[@]}" </dev/null
