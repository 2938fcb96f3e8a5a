#!/usr/bin/env bash
# Measures the library against its floor: scripts/bench.sh [--quick] [--build-dir FOLDER]
#
# Builds the release with its benchmarks, installs the library, a plugin module that does nothing, and hand-written
# programs that do the same without the library (the floor) in a throw-away Wine prefix, and measures both in turn. Prints
# one table, and where the time of a first start goes; writes build/bench/results.json. What is measured, and how to read
# it, stands in docs/performance.md.
#
# What missed its bound is measured again, at most twice: what counts is the best of the (up to) three measurements, as
# other programs on the machine can make one slower, never faster. Ends with 0 only when every bound was reached.
#
#   --quick              fewer repetitions, about 10 seconds, and wider bounds for what only many repetitions settle
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

# on_one_processor COMMAND...: what the command starts runs on one processor. A start asks Wine's server some thirty times.
# Where the server shares the processor, each is a switch; where it does not, each wakes another processor, which on a
# virtual machine takes longer than all that either side does.
on_one_processor()
{
    local processors
    processors=$(taskset -pc $$)
    processors=${processors##*: }
    taskset -pc "${processors%%[,-]*}" $$ >/dev/null
    "$@"
    taskset -pc "$processors" $$ >/dev/null
}

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
    cp "$root/agent/installation/server/TALIXVersionCompatibility.config" "$1"
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

# measure RUN NAME FOLDER PROGRAM PATTERN [OPTIONS...]: runs those of the program's benchmarks that are to be measured: in
# the first run all, then the missed ones among those whose names the pattern matches.
measure()
{
    local report=run-$1-$2.json folder=$site/$3 program=$4 pattern=$5 output=$results/output.txt filter=.
    shift 5
    if [ -f "$results/missed.txt" ]; then
        filter=$(sed -nE "/$pattern/p" "$results/missed.txt" | paste -sd '|')
        [ -n "$filter" ] || return 0
        filter="^($filter)/"
    fi
    # Its own table would repeat ours; what it says counts where it fails.
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
    verdict=$(python3 "$root/scripts/lib/bench.py" $quick "$results") || status=$?
    say "measurement $run of at most $runs: $(seconds_since "$began"). $(tail -n 1 <<<"$verdict")"
    [ "$status" -eq 1 ] || break # 1: a bound was missed
done
say
sed '$d' <<<"$verdict" # Its last line stands above.
say "The same to read by program: build/bench/results.json"
exit "$status"
