#!/usr/bin/env bash
# Builds and tests everything: scripts/test.sh [--long] [ctest arguments]
#
# Makes the machine ready (scripts/setup.sh), then runs
#   - the static checks: format of the sources, shell scripts, CMake files, workflow files, clang-tidy over all sources
#   - the unit tests of the portable logic on this machine, under address and undefined-behaviour sanitizers, and again
#     under the thread sanitizer
#   - each fuzzer of the portable logic for five seconds; scripts/fuzz.sh runs them for longer
#   - all tests of the Windows release build under Wine, in a temporary prefix
#   - the tests that depend on the compiler again, built under Microsoft's C++ ABI; their names begin with "microsoft."
# and prints what failed and, as its last line, "N passed, N failed". The exit code is 0 only if tests ran and none failed.
#
# Every run of ctest gets the arguments, such as -R for a part of the tests. With arguments, the static checks are skipped.
#
# Tests that repeat something many times (tests/stress, the fuzzers, the kill tests) print the number of repetitions as
# "count: <name> = <n>". The script prints the sums above the last line, with the duration of the run.
#
#   --long    the long form of the stress tests (20 minutes); without ctest arguments also the demo, the fuzzers for a
#             minute each, the benchmarks and the coverage (30 minutes)
#   --help    prints this text

set -uo pipefail # without -e: failures are counted, and the other steps run
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
        say "Wine ended before the program began, and was started again:"
        sed 's/^/  /' "$WINEPREFIX/silent-starts"
    fi
    wine_session_end
    print_counts
    print_time
    finish_results "$status"
    exit $?
}
run_began=$(now)
time_apart=0     # microseconds for set-up and builds
most_seconds=1200 # the short form should not take longer, without set-up and builds
trap finish EXIT
# After a signal, the EXIT trap also runs.
trap 'exit 130' INT
trap 'exit 143' TERM

# run_tests NAME FOLDER [CTEST-ARGUMENTS...]
run_tests()
{
    local name=$1 folder=$2 report=$2/test-report.xml suffix='' status=0 at_once=$jobs
    [ "$folder" != "$root/build/microsoft" ] || suffix=", Microsoft's ABI"
    # Tests under Wine often wait. With one test for each processor, the processors are idle a third of the time.
    [ -z "${ORLINDEX_WINE_SESSION:-}" ] || at_once=$((jobs * 3 / 2))
    shift 2
    say "== $name"
    rm -f "$report"
    ctest --test-dir "$folder" -j "$at_once" --timeout "$time_limit" --output-on-failure "--no-tests=$no_tests" \
        --output-junit "$report" "$@" </dev/null || status=$?
    count_tests "$name" "$status" "$report"
    gather_counts "$folder/Testing/Temporary/LastTest.log" "$suffix"
}

# figures SCRIPT LOG: prints the figures of a long run that passed.
figures()
{
    case $1 in
        fuzz) grep ' executions in ' "$2" ;;
        bench) sed -n '/^measured  /,$p' "$2" ;;
        coverage) sed -n '/^ \{20,\}lines /p; /^total  /p' "$2" ;;
    esac | sed 's/^/    /'
}

# run_long SCRIPT: runs a script that is part of the long form.
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

# logged FILE COMMAND...: also writes the output to a file.
logged()
{
    local log=$1
    shift
    "$@" 2>&1 | tee "$log"
}

# apart COMMAND...: for set-up and builds; their time does not count as time of the tests.
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
        say "warning: this is more than $((most_seconds / 60)) minutes. Shorten the short forms, or find what became slow."
}

# build_and_test NAME PRESET FOLDER [CTEST-ARGUMENTS...]: a failed build counts as one failure, with its messages. The parts
# that were built are tested; the last line names the others.
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
        leave_out "$1: everything that the build did not reach"
    fi
}

# Limit in seconds for a test without a limit of its own. It includes the time that a test waits for exclusive use of the
# machine, and a busy machine takes many times as long as an idle one.
time_limit=1200
if [ -n "$long" ]; then
    time_limit=2400
    export ORLINDEX_LONG=1
fi

# A run without tests is an error, unless ctest arguments select tests of another run only.
no_tests=error
[ $# -eq 0 ] || no_tests=ignore

apart bash "$root/scripts/setup.sh" --32-bit || exit

if [ $# -eq 0 ]; then
    say "== static checks"
    if can_check_format; then
        check "format" check_format
    else
        skipped+=("format (needs clang-format $format_version, which this release does not offer)")
    fi
    check "shell scripts" check_scripts
    check "CMake files" check_cmake
    check "workflow files" check_workflows
    apart check "clang-tidy" lint_all # It takes as long as a build.
fi
say "== builds and their tests"
build_and_test "native" native "$root/build/native" "$@"
build_and_test "thread sanitizer" tsan "$root/build/tsan" "$@"
# The long form runs scripts/fuzz.sh instead.
if [ -z "$long" ] || [ $# -ne 0 ]; then
    build_and_test "fuzzers" fuzz "$root/build/fuzz" "$@"
fi
wine_session_begin
build_and_test "Windows" mingw-release "$root/build/release" "$@"
build_and_test "Windows, Microsoft's ABI" microsoft-release "$root/build/microsoft" "$@"
if [ -n "$long" ] && [ $# -eq 0 ]; then
    say "== long runs"
    for script in demo fuzz bench coverage; do
        run_long "$script"
    done
fi
