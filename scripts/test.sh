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
# The stress tests (tests/stress) print what they did, as "count: <name> = <n>"; the sums stand above the last line.
#
#   --long    the long form of the stress tests (20 minutes), and the demo, the fuzzers, the benchmarks and the coverage
#   --help    this text

set -uo pipefail # without -e: what fails is counted, and the rest runs
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"

long=
case ${1:-} in
    --help | -h) usage "$0"; exit ;;
    --long) long=yes; shift ;;
esac

# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"
# shellcheck source=scripts/lib/results.sh
. "$root/scripts/lib/results.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"

finish()
{
    local status=$?
    if [ -f "${WINEPREFIX:-}/silent-starts" ]; then
        say "Wine ended before the program began, and was started once more:"
        sed 's/^/  /' "$WINEPREFIX/silent-starts"
    fi
    wine_session_end
    print_counts
    finish_results "$status"
    exit $?
}
trap finish EXIT
# A signal ends the script through the same door.
trap 'exit 130' INT
trap 'exit 143' TERM

check_format()
{
    find "$root" -path "$root/.*" -prune -o -path "$root/build" -prune -o \
        \( -name '*.cpp' -o -name '*.c' -o -name '*.h' \) -print0 |
        xargs -0 clang-format-14 --dry-run --Werror
}

check_scripts()
{
    (cd "$root" && shellcheck --external-sources --check-sourced scripts/*.sh scripts/wine-run .ci/run)
}

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

# run_long SCRIPT: one of the long runs that are scripts of their own, where it is there.
run_long()
{
    local log
    [ -f "$root/scripts/$1.sh" ] || return 0
    log=$(mktemp)
    check "$1" logged "$log" bash "$root/scripts/$1.sh"
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

# Seconds that a test may take which sets no limit of its own.
time_limit=120
if [ -n "$long" ]; then
    time_limit=600
    export ORLINDEX_LONG=1
fi

# A run without tests is a mistake, unless a part was asked for that lies in the other run.
no_tests=error
[ $# -eq 0 ] || no_tests=ignore

bash "$root/scripts/setup.sh" --32-bit || exit

# A build that fails is one failure with its messages; what can still be tested, is.
if [ $# -eq 0 ]; then
    say "== static checks"
    check "format" check_format
    check "shell scripts" check_scripts
    check "clang-tidy" make_preset tidy "$root/build/tidy"
fi
say "== builds"
if attempt "native build" make_preset native "$root/build/native"; then
    run_tests "native" "$root/build/native" "$@"
fi
if attempt "thread sanitizer build" make_preset tsan "$root/build/tsan"; then
    run_tests "thread sanitizer" "$root/build/tsan" "$@"
fi
if attempt "fuzzers build" make_preset fuzz "$root/build/fuzz"; then
    run_tests "fuzzers" "$root/build/fuzz" "$@"
fi
if attempt "Windows build" make_preset mingw-release "$root/build/release"; then
    wine_session_begin
    run_tests "Windows" "$root/build/release" "$@"
fi
if [ -n "$long" ]; then
    say "== long runs"
    for script in demo fuzz bench coverage; do
        run_long "$script"
    done
fi
