#!/usr/bin/env bash
# Measures which of the library's lines and branches the tests run: scripts/coverage.sh
#
# Builds the library and its tests with counters into build/coverage, runs the unit, module, library and doctor tests
# under Wine, prints line and branch coverage for each file of src/ and in total, and writes
#
#   build/coverage/report/index.html      each source with its counts
#   build/coverage/report/coverage.json   the same data for programs
#
# Then compares the lines and branches that did not run with the markers that give their reasons in the sources (see
# scripts/lib/coverage_markers.py). No figure includes branches that only exceptions take.
#
#   --report    evaluates the counts of the last run again
#   --help      prints this text
#
# The exit code is 0 if the markers are right, and 1 if they are not or if a test failed.

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"
# shellcheck source=scripts/lib/wine.sh
. "$root/scripts/lib/wine.sh"

folder=$root/build/coverage
report=$folder/report
suites=(unit module library doctor)

build_with_counters()
{
    bash "$root/scripts/setup.sh"
    configure_preset coverage "$folder" || fail "the configuration failed" "see the messages above"
    build_preset coverage orlindex orlindex_unit_tests orlindex_module_tests orlindex_library_tests tests/doctor/all ||
        fail "the build failed" "see the messages above"
}

# The counts of all processes of a run are added. Each run begins with 0.
run_tests()
{
    local suite failed=''
    find "$folder" -name '*.gcda' -delete
    trap wine_session_end EXIT
    wine_session_begin
    # The names of the counter files have no drive, and tests change the current drive.
    export GCOV_PREFIX=Z: GCOV_PREFIX_STRIP=0
    for suite in "${suites[@]}"; do
        say "== $suite tests"
        ctest --test-dir "$folder/tests/$suite" -j "$jobs" --timeout 300 --output-on-failure --no-tests=error --quiet \
            --output-log "$folder/$suite.log" </dev/null || failed+=" $suite"
    done
    [ -z "$failed" ] || fail "tests failed:$failed" "see build/coverage/<suite>.log" \
        "scripts/coverage.sh --report shows what ran"
}

write_report()
{
    [ -n "$(find "$folder" -name '*.gcda' -print -quit)" ] || fail "nothing was counted" "run scripts/coverage.sh"
    rm -rf "$report"
    mkdir -p "$report"
    gcovr --root "$root" --object-directory "$folder" --gcov-executable x86_64-w64-mingw32-gcov-posix \
        --filter "$root/src/" --exclude-throw-branches --exclude-unreachable-branches \
        --json "$report/coverage.json" --html-details "$report/index.html" "$folder/src"
}

case ${1:-} in
    --help | -h) usage "$0"; exit ;;
    --report) ;;
    '') build_with_counters; run_tests ;;
    *) fail "unknown argument: $1" "scripts/coverage.sh --help prints the options" ;;
esac
write_report
python3 "$root/scripts/lib/coverage.py" "$root" "$report/coverage.json"
say "Each source with its counts: build/coverage/report/index.html"
