#!/usr/bin/env bash
# Measures which of the library's lines and branches the tests run: scripts/coverage.sh
#
# Builds the library and its tests with counters into build/coverage, runs the unit, module, library and doctor tests
# under Wine, prints line and branch coverage for each file of src/ and in total, and writes
#
#   build/coverage/report/index.html      each source with its counts
#   build/coverage/report/coverage.json   the same for programs
#
# Then compares what was not run with tests/coverage/uncovered.txt, where each such line and branch stands with its
# reason. Branches that only exceptions take are left out of all figures.
#
#   --report    evaluates the counts of the last run again
#   --help      this text
#
# Ends with 0 when what was not run is what the list says, and with 1 when it is not, or a test failed.

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
    configure_preset coverage "$folder" || fail "the configuration failed" "its messages stand above"
    build_preset coverage orlindex orlindex_unit_tests orlindex_module_tests orlindex_library_tests tests/doctor/all ||
        fail "the build failed" "its messages stand above"
}

# Counts add up over all processes of a run; each run begins at none.
run_tests()
{
    local suite failed=''
    find "$folder" -name '*.gcda' -delete
    trap wine_session_end EXIT
    wine_session_begin
    # The counters' files are named without a drive, and tests change theirs.
    export GCOV_PREFIX=Z: GCOV_PREFIX_STRIP=0
    for suite in "${suites[@]}"; do
        say "== $suite tests"
        ctest --test-dir "$folder/tests/$suite" -j "$jobs" --timeout 300 --output-on-failure --no-tests=error --quiet \
            --output-log "$folder/$suite.log" </dev/null || failed+=" $suite"
    done
    [ -z "$failed" ] || fail "tests failed:$failed" "see build/coverage/<suite>.log" \
        "scripts/coverage.sh --report shows what ran all the same"
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
    *) fail "unknown argument: $1" "scripts/coverage.sh --help shows what there is" ;;
esac
write_report
python3 "$root/scripts/lib/coverage.py" "$root" "$report/coverage.json" "$root/tests/coverage/uncovered.txt"
say "Each source with its counts: build/coverage/report/index.html"
