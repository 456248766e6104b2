#!/usr/bin/env bash
# Builds the release and measures: every program of bench/, or only those named (./bench.sh server_start). The figures
# are printed as a table and written to build/release/bench.json.
set -euo pipefail
cd "$(dirname "$0")"
scripts/setup.sh
cmake --preset release >/dev/null
cmake --build --preset release --target "${@/#/bench_}" $([ $# -gt 0 ] || echo benches) >&2
exec bench/run build/release "$@"
