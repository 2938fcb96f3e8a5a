# Collects the results of a run of checks. Source this file after common.sh; do not run it. The last line is always
# "N passed, N failed" (with ", N skipped" and ", not run: ..." if needed), no matter how the script ends.
# shellcheck shell=bash

passed=()
failed=()
skipped=()
not_run=()
counts=()

# attempt NAME COMMAND...: a step that tests need. If it fails, it counts as a failure and its output is printed.
attempt()
{
    local name=$1 output began status=0
    shift
    began=$(now)
    printf '  %s: ' "$name" # before the command runs: a build takes minutes
    output=$("$@" 2>&1 </dev/null) || status=$?
    if [ $status -eq 0 ]; then
        say "passed ($(seconds_since "$began"))"
    else
        failed+=("$name")
        say "FAILED ($(seconds_since "$began"))"
        printf '%s\n' "$output" | sed -E '/^\[[0-9]+\/[0-9]+\] /d; s/^/    | /' # without the progress lines of a build
    fi
    return $status
}

# check NAME COMMAND...: a step that counts as a test.
check()
{
    if attempt "$@"; then
        passed+=("$1")
    fi
}

# leave_out WHAT...: records what should have run and did not.
leave_out()
{
    not_run+=("$@")
}

# count_tests NAME STATUS FILE: adds the tests of one CTest run, which ended with STATUS and wrote its report to FILE.
count_tests()
{
    local name=$1 status=$2 file=$3 outcome test before=${#failed[@]}
    while IFS=$'\t' read -r outcome test; do
        case $outcome in
            passed) passed+=("$name: $test") ;;
            skipped) skipped+=("$name: $test") ;;
            *) failed+=("$name: $test") ;;
        esac
    done < <(python3 "$root/scripts/lib/junit.py" "$file")
    # A run that broke without a failed test must not look successful.
    if [ "$status" -ne 0 ] && [ ${#failed[@]} -eq "$before" ]; then
        failed+=("$name: ctest ended with $status")
    fi
}

# gather_counts FILE [SUFFIX]: collects the lines "count: <name> = <n>" of a run's output, with the suffix after each name.
gather_counts()
{
    local line suffix=${2:-}
    while IFS= read -r line; do
        counts+=("${line/ = /$suffix = }")
    done < <(sed -n 's/^\(count: .* = -\{0,1\}[0-9][0-9.]*\)\r\{0,1\}$/\1/p' "$1" 2>/dev/null)
}

# print_counts: prints the sum for each name. Several tests may contribute to one name.
print_counts()
{
    [ ${#counts[@]} -ne 0 ] || return 0
    say
    printf '%s\n' "${counts[@]}" | awk -F ' = ' '{ sum[$1] += $2 } END { for (name in sum) print name " = " sum[name] }' |
        sort
}

# finish_results STATUS: prints the summary and returns 0 only if tests ran and none failed. A script that ended early, with a
# STATUS that is not 0, has a failure even if none was counted.
finish_results()
{
    local status=$1 line
    if [ "$status" -ne 0 ]; then
        failed+=("the run ended early, with status $status")
    elif [ ${#passed[@]} -eq 0 ] && [ ${#failed[@]} -eq 0 ]; then
        failed+=("no test ran")
    fi
    say
    [ ${#not_run[@]} -eq 0 ] || printf 'not run: %s\n' "${not_run[@]}"
    [ ${#skipped[@]} -eq 0 ] || printf 'skipped: %s\n' "${skipped[@]}"
    [ ${#failed[@]} -eq 0 ] || printf 'failed: %s\n' "${failed[@]}"
    line="${#passed[@]} passed, ${#failed[@]} failed"
    [ ${#skipped[@]} -eq 0 ] || line+=", ${#skipped[@]} skipped"
    [ ${#not_run[@]} -eq 0 ] || line+=", not run: $(printf '%s; ' "${not_run[@]}" | sed 's/; $//')"
    say "$line"
    [ ${#failed[@]} -eq 0 ]
}
