#!/usr/bin/env bash
# Checks what changed, in less than a minute: scripts/check.sh [--since REVISION]
#
# Run it before a commit. It checks the format of the sources and of the CMake files, checks the shell scripts, the workflow files
# and the scripts for Windows, runs clang-tidy over the changed sources, and runs the unit tests of the portable logic on this
# machine, under sanitizers. scripts/test.sh runs all tests.
#
#   --since REVISION   check what changed since this revision instead of since the last commit
#   --help             prints this text
#
# The exit code is 0 only if nothing failed. The first run also builds what it needs and takes some minutes.

set -uo pipefail # without -e: failures are counted, and the other steps run
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/build.sh
. "$root/scripts/lib/build.sh"
# shellcheck source=scripts/lib/results.sh
. "$root/scripts/lib/results.sh"
# shellcheck source=scripts/lib/static-checks.sh
. "$root/scripts/lib/static-checks.sh"

since=HEAD
case ${1:-} in
    --help | -h) usage "$0"; exit ;;
    --since)
        since=${2:-}
        git -C "$root" rev-parse --quiet --verify "$since^{commit}" >/dev/null ||
            fail "--since does not name a revision: '$since'" "name a commit, a branch or a tag"
        ;;
    '') ;;
    *) fail "unknown argument: $1" "scripts/check.sh --help prints the options" ;;
esac

changed_sources()
{
    {
        git -C "$root" diff --name-only --diff-filter=d "$since" -- '*.cpp'
        git -C "$root" ls-files --others --exclude-standard -- '*.cpp'
    } | sort -u
}

lint_changed()
{
    changed_sources | lint_sources
}

unit_tests()
{
    make_preset native "$root/build/native" &&
        ctest --test-dir "$root/build/native" -j "$jobs" --timeout 1200 --output-on-failure --no-tests=error
}

trap 'finish_results $?; exit $?' EXIT
bash "$root/scripts/setup.sh" || exit
if can_check_format; then
    check "format" check_format
else
    skipped+=("format (needs clang-format $format_version, which this release does not offer)")
fi
check "shell scripts" check_scripts
check "CMake files" check_cmake
check "workflow files" check_workflows
check "clang-tidy, $(changed_sources | wc -l) changed sources" lint_changed
check "native unit tests" unit_tests
