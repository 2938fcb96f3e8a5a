#!/usr/bin/env bash
# Checks what changed, in less than a minute: scripts/check.sh [--since REVISION]
#
# Before a commit: the format of the sources, the shell scripts, clang-tidy over the changed sources, and the unit tests of
# the portable logic on this machine, under sanitizers. scripts/test.sh runs everything.
#
#   --since REVISION   what changed since then, not only since the last commit
#   --help             this text
#
# Ends with 0 only when nothing failed. The first run builds what it needs, and takes some minutes.

set -uo pipefail # without -e: what fails is counted, and the rest runs
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
            fail "--since names no revision: '$since'" "it takes a commit, a branch or a tag"
        ;;
    '') ;;
    *) fail "unknown argument: $1" "scripts/check.sh --help shows what there is" ;;
esac

changed_sources()
{
    {
        git -C "$root" diff --name-only --diff-filter=d "$since" -- '*.cpp'
        git -C "$root" ls-files --others --exclude-standard -- '*.cpp'
    } | sort -u
}

# Those of the changed sources that the linter's build knows, each as the build's own name for "what is made of it".
lint_targets()
{
    changed_sources | while IFS= read -r file; do
        ! grep -qF "\"$root/$file\"" "$root/build/tidy/compile_commands.json" || printf '%s\n' "$root/$file^"
    done
}

lint_changed()
{
    local targets
    configure_preset tidy "$root/build/tidy" || return
    mapfile -t targets < <(lint_targets)
    [ ${#targets[@]} -eq 0 ] || ninja -C "$root/build/tidy" -k 0 -j "$jobs" "${targets[@]}"
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
    skipped+=("format (made for clang-format $format_version, which this release does not offer)")
fi
check "shell scripts" check_scripts
check "clang-tidy, $(changed_sources | wc -l) changed sources" lint_changed
check "native unit tests" unit_tests
