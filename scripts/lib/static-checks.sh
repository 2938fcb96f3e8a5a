# The checks that read sources without running them: sourced after common.sh, never run. They take what git tracks, and
# what is new and not ignored.
# shellcheck shell=bash

# The version of clang-format that the sources are formatted with: others lay out some lines differently.
format_version=19

# sources PATTERN...: the tree's files of that kind.
sources()
{
    git -C "$root" ls-files --cached --others --exclude-standard --deduplicate -- "$@" | while IFS= read -r file; do
        [ ! -f "$root/$file" ] || printf '%s\n' "$file"
    done
}

can_check_format()
{
    "$deps/tools/clang-format" --version | grep -q " version $format_version\\."
}

check_format()
{
    sources '*.cpp' '*.c' '*.h' | (cd "$root" && xargs -d '\n' "$deps/tools/clang-format" --dry-run --Werror)
}

check_scripts()
{
    (cd "$root" && shellcheck --external-sources --check-sourced scripts/*.sh scripts/wine-run .ci/run)
}
