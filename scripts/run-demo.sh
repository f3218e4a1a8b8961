#!/usr/bin/env bash
# Starts the studio with its embedded server and demo data (make demo, after the build).
set -euo pipefail
build_dir="${1:-build}"
studio="$build_dir/app/zr-studio"
if [[ ! -x "$studio" ]]; then
    echo "zr-studio was not built in $build_dir; run 'make build' and look for errors." >&2
    exit 1
fi
if [[ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]]; then
    echo "No display found: the studio is a desktop application. To run it on a virtual"
    echo "display (and look at it with a screenshot tool or VNC), use:"
    echo "  xvfb-run -a -s '-screen 0 1600x1000x24' $studio --demo"
    echo "Log in as root with the demo password Zeral2026! (see README.md)."
    exit 0
fi
echo "Starting the studio with demo data; log in as root with the password Zeral2026!"
exec "$studio" --demo
