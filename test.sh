#!/usr/bin/env bash
# Installs what is needed, builds everything and runs every test. Ends with ctest's own summary.
#   --long   first runs, for some hours: the suite under the sanitizers, a minute of fuzzing of each target under
#            them, 10,000 connections one after another, the tests of TORVIK_TEST_SERVER on a server that they have
#            not started, every fault at every request of a fetch, and every mutation of tests/mutations, which the
#            tests must notice
set -euo pipefail
cd "$(dirname "$0")"

fuzz() {
    local target=$1 found=build/fuzz/found/$1
    mkdir -p "$found/corpus" "$found/seeds"
    TORVIK_SEEDS=$found/seeds "build/fuzz/bin/fuzz_$target" -max_total_time=60 -timeout=20 -rss_limit_mb=4096 \
        -print_final_stats=1 -artifact_prefix="$found/" "$found/corpus" "$found/seeds" "tests/fuzz/corpus/$target" \
        >"$found/log" 2>&1 || { tail -n 40 "$found/log"; echo "fuzz_$target found something: see $found"; return 1; }
    echo "fuzz_$target: $(sed -n 's/^stat::number_of_executed_units: *//p' "$found/log") inputs, nothing found"
}

case "${1:-}" in
    "") scripts/setup.sh ;;
    --long)
        scripts/setup.sh --fuzz
        cmake --preset fuzz >/dev/null
        targets=(packets login requests parser batch)
        cmake --build --preset fuzz --target "${targets[@]/#/fuzz_}"
        for target in "${targets[@]}"; do fuzz "$target"; done
        cmake --preset asan >/dev/null
        cmake --build --preset asan
        ctest --preset asan -j "$(nproc)"
        ;;
    *) echo "usage: ./test.sh [--long]" >&2; exit 2 ;;
esac
cmake --preset dev >/dev/null
cmake --build --preset dev
if [ "${1:-}" = --long ]; then
    TORVIK_SOAK_CONNECTIONS=10000 build/dev/bin/test_sandbox --gtest_filter='ServerSoak.*'
    tests/mutations/run
    for program in test_engine_db test_inbound test_outbound test_chain test_fleet; do
        tests/on_a_given_server build/dev/bin "$program" --gtest_brief=1
    done
    TORVIK_LONG=1 build/dev/bin/test_fleet --gtest_brief=1 --gtest_filter='*4GiB'
    TORVIK_LONG=1 build/dev/bin/test_faults --gtest_brief=1 --gtest_filter='*EveryRequest*:*Statement*:*Killed*'
fi
exec ctest --preset dev -j "$(nproc)"
