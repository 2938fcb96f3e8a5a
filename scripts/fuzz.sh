#!/usr/bin/env bash
# Fuzzes the portable logic: scripts/fuzz.sh [--seconds N] [TARGET...]
#
# Builds the fuzzers in build/fuzz and runs each target, or the named ones, for N seconds (60). Every run starts with
# tests/fuzz/corpus/<target>, tests/fuzz/regressions/<target> and what earlier runs added to build/fuzz/corpus/<target>. It
# prints how many inputs it tried and how many of them were new, the former also as
# "count: fuzz executions, <target> = <n>", which scripts/test.sh adds up. If a target fails, the script keeps the input in
# build/fuzz/failures and prints how to replay it.
#
#   --seconds N   seconds for each target
#   --built       runs the last build and builds nothing; ctest uses this
#   --list        prints the names of the targets
#   --help        prints this text
#
# The exit code is 0 if no target failed, 1 if one failed, and 2 if the targets cannot run.

set -uo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"

folder=$root/build/fuzz
sources=$root/tests/fuzz

unusable()
{
    (fail "$@")
    exit 2
}

read_arguments()
{
    seconds=60
    built=''
    list=''
    targets=()
    while [ $# -gt 0 ]; do
        case $1 in
            --help | -h) usage "$0"; exit ;;
            --seconds)
                [[ ${2:-} =~ ^[1-9][0-9]*$ ]] || unusable "--seconds needs a whole number above 0: ${2:-nothing}"
                seconds=$2
                shift
                ;;
            --built) built=1 ;;
            --list) list=1 ;;
            -*) unusable "unknown option: $1" "scripts/fuzz.sh --help prints the options" ;;
            *) targets+=("$1") ;;
        esac
        shift
    done
}

build_fuzzers()
{
    if ! bash "$root/scripts/setup.sh" || ! make_preset fuzz "$folder"; then
        unusable "the fuzzers cannot be built" "see the messages above"
    fi
}

# fuzzers.txt contains one line for each target: its name and its dictionary option.
known_targets()
{
    cut -d' ' -f1 "$folder/fuzzers.txt"
}

check_targets()
{
    [ -f "$folder/fuzzers.txt" ] || unusable "no fuzzers are built" "run scripts/fuzz.sh without --built"
    [ ${#targets[@]} -gt 0 ] || mapfile -t targets < <(known_targets)
    local target
    for target in "${targets[@]}"; do
        known_targets | grep -qxF -- "$target" ||
            unusable "unknown target: $target" "there are: $(known_targets | tr '\n' ' ')"
    done
}

# explain_failure TARGET LOG: prints what went wrong, and what to do with the input.
explain_failure()
{
    local target=$1 log=$2 input
    say "  FAILED; full report: $log"
    grep -E '^does not hold:|terminate called|what\(\):|ERROR: |runtime error:|SUMMARY: ' "$log" | sort -u | sed 's/^/  | /'
    input=$(sed -n 's/^.*Test unit written to //p' "$log" | tail -n 1)
    [ -n "$input" ] || return
    say "  input:   $input"
    say "  replay:  $folder/bin/fuzz_$target $input"
    say "  smaller: $folder/bin/fuzz_$target -minimize_crash=1 -runs=100000 $input"
    say "  keep:    cp $input $sources/regressions/$target/<name of the defect>"
}

# statistic NAME LOG: prints one of the figures that a fuzzer prints at its end.
statistic()
{
    sed -n "s/^stat::$1: *//p" "$2"
}

# fuzz_target TARGET: runs one target; returns 0 if it ended because its time was over.
fuzz_target()
{
    local target=$1 corpus=$folder/corpus/$1 log=$folder/log/$1.log inputs options began status=0
    mkdir -p "$corpus" "$folder/log" "$folder/failures"
    inputs=("$corpus" "$sources/corpus/$target")
    [ ! -d "$sources/regressions/$target" ] || inputs+=("$sources/regressions/$target")
    options=(-max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=8192 -print_final_stats=1
        -artifact_prefix="$folder/failures/$target-")
    read -ra dictionary < <(grep "^$target " "$folder/fuzzers.txt" | cut -d' ' -f2-)
    began=$(now)
    "$folder/bin/fuzz_$target" "${options[@]}" "${dictionary[@]}" "${inputs[@]}" >"$log" 2>&1 </dev/null || status=$?
    say "$target: $(statistic number_of_executed_units "$log") executions in $(seconds_since "$began")," \
        "$(statistic new_units_added "$log") new units, corpus of $(find "${inputs[@]}" -type f | wc -l) inputs"
    say "count: fuzz executions, $target = $(statistic number_of_executed_units "$log")"
    say "count: fuzz seconds, $target = $seconds"
    [ $status -eq 0 ] || explain_failure "$target" "$log"
    return $status
}

read_arguments "$@"
[ -n "$built" ] || build_fuzzers
check_targets
if [ -n "$list" ]; then
    printf '%s\n' "${targets[@]}"
    exit
fi
failures=0
for target in "${targets[@]}"; do
    fuzz_target "$target" || failures=$((failures + 1))
done
[ $failures -eq 0 ] || say "$failures of ${#targets[@]} targets failed"
[ $failures -eq 0 ]
