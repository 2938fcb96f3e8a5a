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

# lint_sources: runs clang-tidy over the sources whose names it reads, as the Windows release build compiles them.
lint_sources()
{
    local build=$root/build/release files=()
    mapfile -t files
    configure_preset mingw-release "$build" </dev/null &&
        python3 -B "$root/scripts/lib/lint_plan.py" "$deps/tools" "$build" "${files[@]}" &&
        ninja -C "$build/lint" -k 0 -j "$jobs" | sed -u '/^[0-9]* warnings* generated\.$/d' # Those of other projects' headers.
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
