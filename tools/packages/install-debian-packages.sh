#!/usr/bin/env bash
# SPDX-License-Identifier: GPL-3.0-or-later
# install-debian-packages.sh LIST...: installs what the files LIST name and this machine lacks; quick
# when nothing does.
set -euo pipefail

mapfile -t wanted < <(sed 's/#.*//' "$@" | tr -s '[:space:]' '\n' | grep .)

is_installed() {
  [ "$(dpkg-query -W -f '${db:Status-Status}' "$1" 2>/dev/null)" = installed ]
}

# Of "one|other" either will do; the first is what gets installed.
missing() {
  local plain=() installed choice package
  for choice in "${wanted[@]}"; do
    case "$choice" in
      *"|"*)
        for package in ${choice//|/ }; do is_installed "$package" && continue 2; done
        echo "${choice%%|*}"
        ;;
      *) plain+=("$choice") ;;
    esac
  done
  installed=$(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${plain[@]}" 2>/dev/null |
    sed -n 's/^installed //p' | sort -u) || true
  comm -23 <(printf '%s\n' "${plain[@]}" | sort -u) <(printf '%s\n' "$installed")
}

if ! command -v dpkg-query >/dev/null; then
  echo "This is no Debian; please see to it that these are there: ${wanted[*]}" >&2
  exit 0
fi
mapfile -t absent < <(missing)
[ "${#absent[@]}" -eq 0 ] && exit 0

as_root=()
if [ "$(id -u)" -ne 0 ]; then
  command -v sudo >/dev/null || { echo "Missing: ${absent[*]}; run this as root or install sudo." >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing: ${absent[*]}"
install=("${as_root[@]}" env DEBIAN_FRONTEND=noninteractive
  apt-get install -y -q --no-install-recommends "${absent[@]}")
# Package lists that are there and fresh enough save an update.
"${install[@]}" >/dev/null 2>&1 || { "${as_root[@]}" apt-get update -q && "${install[@]}"; }
