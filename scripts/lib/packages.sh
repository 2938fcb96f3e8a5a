# Which Debian packages Orlindex is built and tested with: sourced after common.sh, never run.
#
#     choose_packages     picks the versions that this release offers, and says which; keeps the choice in .deps/
#     missing_packages    those of all packages that are not installed
#     as_root COMMAND...  as root, or through sudo
# shellcheck shell=bash

release=$(sed -n 's/^VERSION_CODENAME=//p' /etc/os-release)
chosen=$deps/packages-${release:-unknown}
llvm='' boost=''
# shellcheck source=/dev/null
[ ! -f "$chosen" ] || . "$chosen"

# Packages of one name on every release.
packages=(
    git cmake ninja-build g++ dpkg-dev xz-utils python3 openssl
    # The Windows side: compiler, compatibility layer, code signing.
    g++-mingw-w64-x86-64-posix wine wine64 osslsigncode
    # The same for 32-bit hosts.
    g++-mingw-w64-i686-posix
    # Static checks, coverage, the reference of the headers, and the compiler for the samples in C#.
    shellcheck pkgconf gcovr doxygen mono-mcs mono-runtime
    # Libraries of the native build of the portable logic; the cross build takes its own from .deps/.
    libjsoncpp-dev libgtest-dev libgmock-dev googletest
)

# Sanitizers, fuzzers, static checks, and the checks of Microsoft's rules: all of one version of LLVM.
llvm_packages()
{
    printf '%s\n' "clang-$1" "clang-format-$1" "clang-tidy-$1" "libclang-rt-$1-dev" "libc++-$1-dev" "llvm-$1"
}
oldest_llvm=14
proven_llvm=19 # with which the sources are formatted, too

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

# unavailable PACKAGE...: those that apt can neither install nor has installed.
unavailable()
{
    comm -23 <(printf '%s\n' "$@" | sort -u) \
        <(LC_ALL=C apt-cache policy "$@" 2>/dev/null |
            awk '/^[^ ].*:$/ { name = substr($0, 1, length($0) - 1) } /^  Candidate: / && $2 != "(none)" { print name }' |
            sort -u)
}

# versions PATTERN OLDEST: the versions in the names of packages that apt knows, from OLDEST on, oldest first.
versions()
{
    local version
    apt-cache --names-only search "^$1\$" | sed -nE "s/^$1 .*/\\1/p" | sort -uV | while IFS= read -r version; do
        [ "$(printf '%s\n' "$2" "$version" | sort -V | head -n 1)" != "$2" ] || printf '%s\n' "$version"
    done
}

# first_whole FUNCTION VERSION...: the first version all of whose packages apt can install.
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

# The proven version of LLVM where there is one, else the newest. The oldest sufficient Boost, which is nearest to the
# one that the library is developed with.
find_versions()
{
    local found
    mapfile -t found < <(versions 'clang-([0-9]+)' "$oldest_llvm" | sort -rV)
    llvm=$(first_whole llvm_packages "$proven_llvm" "${found[@]}") || llvm=
    mapfile -t found < <(versions 'libboost([0-9.]+)-dev' "$oldest_boost")
    boost=$(first_whole boost_packages "${found[@]}") || boost=
    [ -n "$llvm" ] && [ -n "$boost" ]
}

# Where apt lacks something, and after its lists were read anew lacks it still: which names were looked for.
explain_unavailable()
{
    local lacking=()
    mapfile -t lacking < <(unavailable "${packages[@]}")
    [ -n "$llvm" ] || lacking+=("$(llvm_packages N | paste -sd ' ') with one N from $oldest_llvm on")
    [ -n "$boost" ] || lacking+=("$(boost_packages N) with N from $oldest_boost on")
    fail "this release of the system does not offer: ${lacking[0]}" "${lacking[@]:1}" \
        "Debian 12 and 13 offer all packages that are needed; see scripts/lib/packages.sh"
}

everything_is_offered()
{
    find_versions && [ -z "$(unavailable "${packages[@]}")" ]
}

choose_packages()
{
    [ ! -f "$chosen" ] || return 0
    # A bare machine has no lists of packages yet.
    everything_is_offered || { as_root apt-get update >/dev/null && everything_is_offered; } || explain_unavailable
    printf 'llvm=%s\nboost=%s\n' "$llvm" "$boost" >"$chosen"
    say "Chosen among the versions of this release: LLVM $llvm, Boost $boost"
}

# Node.js is often there from elsewhere than Debian.
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
