# The Debian packages that Orlindex is built and tested with. Source this file after common.sh; do not run it.
#
#     choose_packages     chooses and prints the versions that this release offers; stores the choice in .deps/
#     missing_packages    prints the packages that are not installed
#     as_root COMMAND...  runs a command as root or with sudo
# shellcheck shell=bash

release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
chosen=$deps/packages-${release:-unknown}
llvm='' boost=''
# shellcheck source=/dev/null
[ ! -f "$chosen" ] || . "$chosen"

# Packages with the same name on every release.
packages=(
    git cmake ninja-build g++ dpkg-dev xz-utils python3 openssl
    # For Windows programs: compiler, Wine, code signing.
    g++-mingw-w64-x86-64-posix wine wine64 osslsigncode
    # The same for 32-bit hosts.
    g++-mingw-w64-i686-posix
    # For windows: a display in memory, its keyboard, pictures of it, and Windows' fonts for symbols and texts.
    xvfb xdotool imagemagick fonts-wine
    # Static checks, coverage, the API reference, and the compiler for the C# samples.
    shellcheck cmake-format pkgconf gcovr doxygen mono-mcs mono-runtime
    # The package for hosts in Python, and the check of its type hints.
    python3-build python3-setuptools python3-wheel python3-pip python3-venv mypy
    # Libraries for the native build of the portable logic. The cross build uses those in .deps/.
    libjsoncpp-dev libgtest-dev libgmock-dev googletest
)

# Sanitizers, fuzzers, static checks, and the checks of Microsoft's rules all use one version of LLVM.
llvm_packages()
{
    printf '%s\n' "clang-$1" "clang-format-$1" "clang-tidy-$1" "libclang-rt-$1-dev" "libc++-$1-dev" "lld-$1" "llvm-$1"
}
oldest_llvm=14
proven_llvm=19 # this version also formats the sources

boost_packages()
{
    printf '%s\n' "libboost$1-dev"
}
oldest_boost=1.81

as_root()
{
    if [ "$(id -u)" -eq 0 ]; then
        "$@"
    else
        sudo "$@"
    fi
}

# unavailable PACKAGE...: prints those that are not installed and that apt cannot install.
unavailable()
{
    comm -23 <(printf '%s\n' "$@" | sort -u) \
        <(LC_ALL=C apt-cache policy "$@" 2>/dev/null |
            awk '/^[^ ].*:$/ { name = substr($0, 1, length($0) - 1) } /^  Candidate: / && $2 != "(none)" { print name }' |
            sort -u)
}

# versions PATTERN OLDEST: prints the versions in the names of packages that apt knows, from OLDEST on, oldest first.
versions()
{
    local version
    apt-cache --names-only search "^$1\$" | sed -nE "s/^$1 .*/\\1/p" | sort -uV | while IFS= read -r version; do
        [ "$(printf '%s\n' "$2" "$version" | sort -V | head -n 1)" != "$2" ] || printf '%s\n' "$version"
    done
}

# first_whole FUNCTION VERSION...: prints the first version for which apt can install all packages.
first_whole()
{
    local function=$1 version names
    shift
    for version in "$@"; do
        mapfile -t names < <("$function" "$version")
        if [ -z "$(unavailable "${names[@]}")" ]; then
            printf '%s\n' "$version"
            return
        fi
    done
    return 1
}

# Chooses the proven version of LLVM, or else the newest, and the oldest sufficient Boost, which is closest to the one that the
# library is developed with.
find_versions()
{
    local found
    mapfile -t found < <(versions 'clang-([0-9]+)' "$oldest_llvm" | sort -rV)
    llvm=$(first_whole llvm_packages "$proven_llvm" "${found[@]}") || llvm=
    mapfile -t found < <(versions 'libboost([0-9.]+)-dev' "$oldest_boost")
    boost=$(first_whole boost_packages "${found[@]}") || boost=
    [ -n "$llvm" ] && [ -n "$boost" ]
}

# If packages are still unavailable after an update of the lists: prints the names that it looked for.
explain_unavailable()
{
    local lacking=()
    mapfile -t lacking < <(unavailable "${packages[@]}")
    [ -n "$llvm" ] || lacking+=("$(llvm_packages N | paste -sd ' ') with one N of $oldest_llvm or newer")
    [ -n "$boost" ] || lacking+=("$(boost_packages N) with an N of $oldest_boost or newer")
    fail "this release of the system does not offer: ${lacking[0]}" "${lacking[@]:1}" \
        "Debian 12 and 13 offer all required packages; see scripts/lib/packages.sh"
}

everything_is_offered()
{
    find_versions && [ -z "$(unavailable "${packages[@]}")" ]
}

choose_packages()
{
    [ ! -f "$chosen" ] || return 0
    # A new machine has no package lists yet.
    everything_is_offered || { as_root apt-get update >/dev/null && everything_is_offered; } || explain_unavailable
    printf 'llvm=%s\nboost=%s\n' "$llvm" "$boost" >"$chosen"
    say "Versions that this release offers: LLVM $llvm, Boost $boost"
}

# Node.js is often installed from another source than Debian.
node_packages()
{
    command -v npm >/dev/null || printf '%s\n' nodejs npm
}

all_packages()
{
    printf '%s\n' "${packages[@]}"
    llvm_packages "$llvm"
    boost_packages "$boost"
}

missing_packages()
{
    local all
    mapfile -t all < <(all_packages)
    node_packages
    comm -23 <(printf '%s\n' "${all[@]}" | sort) \
        <(dpkg-query -W -f '${db:Status-Status} ${Package}\n' "${all[@]}" 2>/dev/null | sed -n 's/^installed //p' | sort)
}

install_packages()
{
    local missing
    mapfile -t missing < <(missing_packages)
    export DEBIAN_FRONTEND=noninteractive
    as_root apt-get update
    as_root apt-get install -y --no-install-recommends "${missing[@]}"
}
