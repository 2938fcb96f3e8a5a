# The checks that read sources without running them. Source this file after common.sh; do not run it. They check the files that
# git tracks, and new files that are not ignored.
# shellcheck shell=bash

# The sources are formatted with this version of clang-format. Other versions format some lines differently.
format_version=19

# sources PATTERN...: prints the matching files of the tree.
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

# The files in scripts/lib are checked with the scripts that source them.
check_scripts()
{
    sources '*.sh' scripts/wine-run .ci/run | grep -v '^scripts/lib/' |
        (cd "$root" && xargs -d '\n' shellcheck --external-sources --check-sourced)
}

check_cmake()
{
    sources '*.cmake' 'CMakeLists.txt' '*/CMakeLists.txt' | (cd "$root" && xargs -d '\n' cmake-format --check)
}

# lint_sources: runs clang-tidy over the sources whose names it reads. A source that several programs compile is checked once.
# "<source>^" is ninja's name for the output of a source.
lint_sources()
{
    local file targets=()
    configure_preset tidy "$root/build/tidy" </dev/null || return
    while IFS= read -r file; do
        if grep -qF "\"$root/$file\"" "$root/build/tidy/compile_commands.json"; then
            targets+=("$root/$file^")
        else
            printf 'not linted, because the Windows build does not compile it: %s\n' "$file"
        fi
    done
    [ ${#targets[@]} -eq 0 ] || ninja -C "$root/build/tidy" -k 0 -j "$jobs" "${targets[@]}"
}

lint_all()
{
    sources '*.cpp' | lint_sources
}

# The workflow files and the scripts for Windows, which cannot run here: a linter, a parser, and whether everything that they name
# exists. The last one needs all files, because a change elsewhere can remove what they name.
check_workflows()
{
    export ORLINDEX_NODE=$deps/node
    sources '.github/workflows/*.yml' | (cd "$root" && xargs -d '\n' node tests/workflow/lint.mjs) &&
        sources 'scripts/windows/*.ps1' | (cd "$root" && xargs -d '\n' node tests/workflow/powershell.mjs) &&
        node "$root/tests/workflow/names.mjs" "$root"
}
