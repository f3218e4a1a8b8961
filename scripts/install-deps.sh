#!/usr/bin/env bash
# Installs the Debian packages of scripts/packages.txt that are not installed yet.
# Runs apt-get only when something is missing, so a prepared machine is not touched.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
missing=()
while read -r pkg; do
    [[ -z "$pkg" || "$pkg" == \#* ]] && continue
    status=$(dpkg-query -W -f='${Status}' "$pkg" 2>/dev/null || true)
    [[ "$status" == "install ok installed" ]] || missing+=("$pkg")
done <"$here/packages.txt"
if ((${#missing[@]} == 0)); then
    exit 0
fi
echo "Installing missing packages: ${missing[*]}"
sudo=""
if [[ $(id -u) -ne 0 ]]; then
    command -v sudo >/dev/null || { echo "Please install as root: ${missing[*]}" >&2; exit 1; }
    sudo="sudo"
fi
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
