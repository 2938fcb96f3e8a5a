#!/usr/bin/env bash
# Measures the library against its floor: scripts/bench.sh [--quick] [--build-dir FOLDER]
#
# Builds the release with its benchmarks, installs the library, a plugin module that does nothing, and hand-written
# programs that do the same without the library (the floor) in a throw-away Wine prefix, and measures both in turn. Prints
# one table, and where the time of a first start goes; writes build/bench/results.json. What is measured, and how to read
# it, stands in docs/performance.md.
#
# A bound that is missed is measured again with all others, at most twice more: what counts is the best of the (up to)
# three runs, as another program on the machine can make a run slower, never faster. Ends with 0 only when every bound
# was reached.
#
#   --quick              fewer repetitions, under 40 seconds a run, and wider bounds for what only many repetitions settle
#   --build-dir FOLDER   measures what FOLDER holds, builds nothing
#   --help               this text

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"

quick=
build=
while [ $# -gt 0 ]; do
    case $1 in
        --help | -h) usage "$0"; exit ;;
        --quick) quick=--quick ;;
        --build-dir)
            build=${2:-}
            [ -d "$build" ] || fail "--build-dir names no folder: '$build'" "it takes the folder of a build, such as build/release"
            shift
            ;;
        *) fail "unknown argument: $1" "scripts/bench.sh --help shows what there is" ;;
    esac
    shift
done

results=$root/build/bench
runs=3

build_release()
{
    bash "$root/scripts/setup.sh"
    configure_preset mingw-release "$root/build/release" || fail "the configuration failed" "its messages stand above"
    build_preset mingw-release benchmarks || fail "the build failed" "its messages stand above"
}

# install_host FOLDER CONFIG: the library, and the programs that measure it.
install_host()
{
    mkdir -p "$1"
    cp "$build/bin/Orlindex.dll" "$build/bench/programs/"*.exe "$build/bench/programs/OrlindexFloor.dll" "$1"
    printf '%s\n' "$2" >"$1/Orlindex.config"
}

install_server()
{
    mkdir -p "$1"
    printf 'a file to be found\n' >"$1/Pellwick.exe"
    cp "$build/bench/programs/PellwickClient.dll" "$1"
    cp "$root/simulator/installation/server/TALIXVersionCompatibility.config" "$1"
}

install()
{
    site="$WINEPREFIX/drive_c/Orlindex benchmarks"
    install_server "$site/server"
    install_host "$site/host" '{"ssoServer": {"bundleId": "com.kestrany.bench", "searchPaths": ""}}'
    # Finds a server application before the registered one, and no version compatibility file beside it.
    mkdir -p "$site/empty"
    printf 'a file to be found\n' >"$site/empty/Pellwick.exe"
    install_host "$site/host-without-plugin" '{"ssoServer": {"searchPaths": "%ExePath%/../empty"}}'
}

# run_program FOLDER PROGRAM REPORT [OPTIONS...]: its table of its own would repeat ours. What it says counts where it fails.
run_program()
{
    local folder=$1 program=$2 report=$3 output=$results/output.txt
    shift 3
    (cd "$site/$folder" && "$wine64" "./$program" "$@" --benchmark_out="report.json" --benchmark_out_format=json) \
        >"$output" 2>&1 </dev/null ||
        fail "$program failed" "its output: $(tail -n 5 "$output" | tr -d '\r' | tr '\n' ' ')"
    mv "$site/$folder/report.json" "$report"
}

# measure RUN: one run of everything.
measure()
{
    run_program host bench_calls.exe "$results/run-$1-calls.json" $quick
    run_program host-without-plugin bench_calls.exe "$results/run-$1-fallback.json" $quick --without-plugin
    run_program host bench_starts.exe "$results/run-$1-starts.json" $quick
}

if [ -z "$build" ]; then
    build=$root/build/release
    build_release
fi
[ -f "$build/bench/programs/bench_calls.exe" ] ||
    fail "no benchmarks in $build" "configure it with -DORLINDEX_BUILD_BENCHMARKS=ON and build the target 'benchmarks'"

trap wine_session_end EXIT
wine_session_begin
rm -rf "$results"
mkdir -p "$results"
install

for ((run = 1; run <= runs; run++)); do
    began=$(now)
    measure $run
    say "run $run of at most $runs: $(seconds_since "$began")"
    status=0
    python3 "$root/scripts/lib/bench.py" $quick "$results" || status=$?
    [ $status -eq 1 ] || break # 1: a bound was missed
done
exit $status
