#!/usr/bin/env bash
# Builds and tests everything: scripts/test.sh [--long] [ctest arguments]
#
# Makes the machine ready (scripts/setup.sh), then runs
#   - the static checks: format of the sources, shell scripts, clang-tidy over the library
#   - the unit tests of the portable logic on this machine, under address and undefined-behaviour sanitizers, and again
#     under the thread sanitizer
#   - each fuzzer of the portable logic for ten seconds; scripts/fuzz.sh runs them for longer
#   - all tests of the Windows release build under Wine, in a prefix of their own that is gone afterwards
# and prints what failed and, as its last line, "N passed, N failed". Ends with 0 only when tests ran and none failed.
#
# Arguments go to every run of ctest, such as -R for a part of the tests; the static checks are left out then.
#
# Tests that repeat a thing many times (tests/stress, the fuzzers, killed servers and hosts) print how often, as
# "count: <name> = <n>"; the sums stand above the last line, with the time that the run took.
#
#   --long    the long form of the stress tests (20 minutes); unless a part was asked for, also the demo, the fuzzers for
#             a minute each, the benchmarks and the coverage (30 minutes)
#   --help    this text

set -uo pipefail # without -e: what fails is counted, and the rest runs
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"

long=
ctest_arguments=()
for argument in "$@"; do
    case $argument in
        --help | -h) usage "$0"; exit ;;
        --long) long=yes ;;
        *) ctest_arguments+=("$argument") ;;
    esac
done
set -- "${ctest_arguments[@]}"

# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"
# shellcheck source=scripts/lib/results.sh
. "$root/scripts/lib/results.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"
# shellcheck source=scripts/lib/static-checks.sh
. "$root/scripts/lib/static-checks.sh"

finish()
{
    local status=$?
    if [ -f "${WINEPREFIX:-}/silent-starts" ]; then
        say "Wine ended before the program began, and was started once more:"
        sed 's/^/  /' "$WINEPREFIX/silent-starts"
    fi
    wine_session_end
    print_counts
    print_time
    finish_results "$status"
    exit $?
}
run_began=$(now)
time_apart=0     # microseconds of set-up and builds
most_seconds=900 # that the ordinary form should take without them
trap finish EXIT
# A signal ends the script through the same door.
trap 'exit 130' INT
trap 'exit 143' TERM

# run_tests NAME FOLDER [CTEST-ARGUMENTS...]
run_tests()
{
    local name=$1 folder=$2 report=$2/test-report.xml status=0
    shift 2
    say "== $name"
    rm -f "$report"
    ctest --test-dir "$folder" -j "$jobs" --timeout "$time_limit" --output-on-failure "--no-tests=$no_tests" --output-junit "$report" \
        "$@" </dev/null || status=$?
    count_tests "$name" "$status" "$report"
    gather_counts "$folder/Testing/Temporary/LastTest.log"
}

# figures SCRIPT LOG: of what a long run printed, what there is to know when it passed.
figures()
{
    case $1 in
        fuzz) grep ' executions in ' "$2" ;;
        bench) sed -n '/^measured  /,$p' "$2" ;;
        coverage) sed -n '/^ \{20,\}lines /p; /^total  /p' "$2" ;;
    esac | sed 's/^/    /'
}

# run_long SCRIPT: one of the long runs that are scripts of their own.
run_long()
{
    local log
    log=$(mktemp)
    if attempt "$1" logged "$log" bash "$root/scripts/$1.sh"; then
        passed+=("$1")
        figures "$1" "$log"
    fi
    gather_counts "$log"
    rm -f "$log"
}

# logged FILE COMMAND...: keeps the output in a file too.
logged()
{
    local log=$1
    shift
    "$@" 2>&1 | tee "$log"
}

# apart COMMAND...: set-up and builds, whose time is not that of the tests.
apart()
{
    local from status=0
    from=$(now)
    "$@" || status=$?
    time_apart=$((time_apart + $(now) - from))
    return $status
}

print_time()
{
    local total tests
    total=$((($(now) - run_began) / 1000000))
    tests=$((total - time_apart / 1000000))
    say
    if [ -n "$long" ]; then
        say "The run took $total seconds."
        return
    fi
    say "The run took $total seconds, $tests of them without set-up and builds."
    [ $tests -le $most_seconds ] ||
        say "warning: that is more than $((most_seconds / 60)) minutes: shorten the short forms, or find what became slow"
}

# build_and_test NAME PRESET FOLDER [CTEST-ARGUMENTS...]: a build that fails is one failure with its messages; what was
# built is tested, and what was not is named in the last line.
build_and_test()
{
    local name=$1 preset=$2 folder=$3
    shift 3
    if ! apart attempt "$name build" make_what_builds "$preset" "$folder"; then
        leave_out_not_built "$name" "$folder"
    fi
    [ ! -f "$folder/CTestTestfile.cmake" ] || run_tests "$name" "$folder" "$@"
}

leave_out_not_built()
{
    if [ -s "$2/not-built.txt" ]; then
        leave_out "$1: $(paste -sd ' ' "$2/not-built.txt")"
    else
        leave_out "$1: whatever the build did not come to"
    fi
}

# Seconds that a test may take which sets no limit of its own. One that needs the machine to itself waits within them,
# and a busy machine takes many times as long as an idle one.
time_limit=1200
if [ -n "$long" ]; then
    time_limit=2400
    export ORLINDEX_LONG=1
fi

# A run without tests is a mistake, unless a part was asked for that lies in the other run.
no_tests=error
[ $# -eq 0 ] || no_tests=ignore

apart bash "$root/scripts/setup.sh" --32-bit || exit

if [ $# -eq 0 ]; then
    say "== static checks"
    if can_check_format; then
        check "format" check_format
    else
        skipped+=("format (made for clang-format $format_version, which this release does not offer)")
    fi
    check "shell scripts" check_scripts
    check "clang-tidy" make_preset tidy "$root/build/tidy"
fi
say "== builds and their tests"
build_and_test "native" native "$root/build/native" "$@"
build_and_test "thread sanitizer" tsan "$root/build/tsan" "$@"
# Of the long form, scripts/fuzz.sh is a part.
if [ -z "$long" ] || [ $# -ne 0 ]; then
    build_and_test "fuzzers" fuzz "$root/build/fuzz" "$@"
fi
wine_session_begin
build_and_test "Windows" mingw-release "$root/build/release" "$@"
if [ -n "$long" ] && [ $# -eq 0 ]; then
    say "== long runs"
    for script in demo fuzz bench coverage; do
        run_long "$script"
    done
fi
