#!/usr/bin/env bash
# Installs what is needed, builds everything and runs every test. Ends with ctest's own summary.
set -euo pipefail
cd "$(dirname "$0")"
scripts/setup.sh
cmake --preset dev >/dev/null
cmake --build --preset dev
exec ctest --preset dev -j "$(nproc)"
