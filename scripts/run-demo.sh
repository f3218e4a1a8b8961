#!/usr/bin/env bash
# Starts the studio with its embedded server and demo data, once the studio is built.
set -euo pipefail
build_dir="${1:-build}"
studio="$build_dir/app/zr-studio"
if [[ ! -x "$studio" ]]; then
    echo "The studio (zr-studio) is not part of the build yet: the foundation libraries"
    echo "and their tests are built; run 'make test' to exercise them."
    exit 0
fi
if [[ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]]; then
    echo "No display found. To run the studio on a virtual display:"
    echo "  xvfb-run -a -s '-screen 0 1600x1000x24' $studio --demo"
    exit 1
fi
exec "$studio" --demo
