#!/usr/bin/env bash
# Makes this machine ready to build and test Orlindex: scripts/setup.sh
#
# Installs the missing Debian packages (as root or with sudo), cross-builds the libraries into .deps/ and makes the Wine prefix
# that the tests copy. It takes about six minutes the first time, and less than a second if everything is in place. A step that
# was interrupted is done again.
#
#   --help    prints this text
#   --clean   removes .deps/ first, so that everything in it is made again
#   --32-bit  also makes what the build for 32-bit Windows (preset mingw32-release) and its tests need: the libraries, and a
#             Wine prefix that runs 32-bit programs, if this machine can install Debian's packages for i386

set -euo pipefail
# shellcheck source=scripts/lib/common.sh
. "$(dirname "$0")/lib/common.sh"
# shellcheck source=scripts/lib/wine-environment.sh
. "$root/scripts/lib/wine-environment.sh"
# shellcheck source=scripts/lib/packages.sh
. "$root/scripts/lib/packages.sh"
# shellcheck source=scripts/lib/microsoft.sh
. "$root/scripts/lib/microsoft.sh"

toolchain=$root/cmake/mingw-w64-x86_64.cmake
prefix=$deps/prefix

# --- Steps ----------------------------------------------------------------------------------------------------------

# Prints the machine's package sources for the main suite as sources of source packages.
source_entries()
{
    local key=/usr/share/keyrings/debian-archive-keyring.gpg options=
    [ ! -f $key ] || options="[signed-by=$key] "
    # shellcheck disable=SC2016 # apt's own placeholders
    apt-get indextargets --format '$(REPO_URI) $(CODENAME) $(COMPONENT)' \
        'Created-By: Packages' 'Origin: Debian' 'Component: main' "Codename: $release" |
        sort -u | sed "s|^|deb-src $options|"
}

# fetch_sources FOLDER PACKAGE...: downloads the archives of source packages. Many machines have no sources for source packages:
# these calls use their own list, in folders of this tree.
fetch_sources()
{
    local apt=$deps/apt downloads=$1
    shift
    rm -rf "$apt" "$downloads"
    mkdir -p "$apt/lists/partial" "$apt/cache/archives/partial" "$downloads"
    source_entries >"$apt/sources.list"
    [ -s "$apt/sources.list" ] || { echo "apt knows no Debian package source: run 'apt-get update' as root"; return 1; }
    local options=(-o "Dir::Etc::SourceList=$apt/sources.list" -o Dir::Etc::SourceParts=/dev/null
        -o "Dir::State::Lists=$apt/lists" -o "Dir::Cache=$apt/cache")
    apt-get "${options[@]}" update
    (cd "$downloads" && apt-get "${options[@]}" source --download-only --tar-only "$@")
    rm -rf "$apt"
}

fetch_library_sources()
{
    fetch_sources "$deps/downloads" "boost$boost" libjsoncpp benchmark
}

# unpack PATTERN FOLDER [TAR-OPTIONS...]: unpacks one downloaded archive without its top folder.
unpack()
{
    local archive folder=$2
    archive=$(compgen -G "$deps/downloads/$1") || { echo "not in $deps/downloads: $1; run with --clean"; return 1; }
    shift 2
    rm -rf "$folder"
    mkdir -p "$folder"
    tar -xf "$archive" -C "$folder" --strip-components=1 "$@"
}

# cross_install SOURCES [CMAKE-OPTIONS...]: builds and installs one library for Windows.
cross_install()
{
    local sources=$1 build=$deps/build
    shift
    rm -rf "$build"
    cmake -G Ninja -S "$sources" -B "$build" -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_INSTALL_PREFIX="$prefix" \
        -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_STANDARD=17 -DBUILD_SHARED_LIBS=OFF -DBUILD_TESTING=OFF "$@"
    cmake --build "$build" -j "$jobs"
    cmake --install "$build"
    rm -rf "$build"
}

build_jsoncpp()
{
    unpack 'libjsoncpp_*.orig.tar.*' "$deps/src/jsoncpp"
    cross_install "$deps/src/jsoncpp" -DBUILD_STATIC_LIBS=ON -DBUILD_OBJECT_LIBS=OFF -DJSONCPP_WITH_TESTS=OFF \
        -DJSONCPP_WITH_POST_BUILD_UNITTEST=OFF -DJSONCPP_WITH_PKGCONFIG_SUPPORT=OFF
}

build_boost()
{
    unpack "boost${boost}_*.orig.tar.*" "$deps/src/boost" --no-wildcards-match-slash \
        --exclude='*/test' --exclude='*/doc' --exclude='*/example'
    cross_install "$deps/src/boost" -DBOOST_INSTALL_LAYOUT=system \
        -DBOOST_INCLUDE_LIBRARIES='filesystem;format;algorithm;system;exception;program_options'
    local version package
    version=$(sed -n 's/^#define BOOST_LIB_VERSION "\(.*\)"/\1/p' "$prefix/include/boost/version.hpp")
    version=${version//_/.}
    [[ $version == *.*.* ]] || version+=.0
    package=$prefix/lib/cmake/Boost-$version
    mkdir -p "$package"
    cp "$root/cmake/boost/BoostConfig.cmake" "$package/"
    cmake -DVERSION="$version" -DFILE="$package/BoostConfigVersion.cmake" -P "$root/cmake/boost/WriteVersion.cmake"
}

# Boost.Beast and what it includes are headers only: Debian's serve for Windows, too. The one folder is linked, because the
# rest of /usr/include is for Linux.
link_boost_headers()
{
    [ -f /usr/include/boost/beast/core.hpp ] || { echo "no /usr/include/boost/beast/core.hpp"; return 1; }
    rm -rf "$deps/headers"
    mkdir -p "$deps/headers"
    ln -s /usr/include/boost "$deps/headers/boost"
}

build_googletest()
{
    cross_install /usr/src/googletest -DINSTALL_GTEST=ON "$@"
}

build_benchmark()
{
    unpack 'benchmark_*.orig.tar.*' "$deps/src/benchmark"
    cross_install "$deps/src/benchmark" -DBENCHMARK_ENABLE_TESTING=OFF -DBENCHMARK_ENABLE_GTEST_TESTS=OFF \
        -DBENCHMARK_ENABLE_WERROR=OFF -DBENCHMARK_INSTALL_DOCS=OFF
}

# Links the tools of LLVM under names without a version, for presets and scripts.
link_tools()
{
    local tool
    rm -rf "$deps/tools"
    mkdir -p "$deps/tools"
    for tool in clang clang++ clang-format clang-tidy lld-link llvm-dlltool llvm-lib llvm-mt llvm-nm llvm-rc llvm-readobj; do
        ln -s "$(command -v "$tool-$llvm")" "$deps/tools/$tool"
    done
    # One program, which takes Microsoft's options if this is its name.
    ln -s "$(command -v "clang-$llvm")" "$deps/tools/clang-cl"
}

# Installs the public tools that tests compare with; tests/node pins their versions. npm runs inside the folder: with --prefix
# it would look for the machine's settings, such as its certificates, below that prefix.
install_node_packages()
{
    rm -rf "$deps/node"
    mkdir -p "$deps/node"
    cp "$root/tests/node/package.json" "$root/tests/node/package-lock.json" "$deps/node/"
    (cd "$deps/node" && npm ci --cache "$deps/node/cache" --ignore-scripts --no-audit --no-fund)
    rm -rf "$deps/node/cache"
}

# Installs the runtimes for Windows that the bindings are tested with, and the compiler of TypeScript; tests/bindings/runtimes pins
# their versions. --force: npm would refuse packages for another system than this one.
install_binding_runtimes()
{
    rm -rf "$deps/bindings"
    mkdir -p "$deps/bindings"
    cp "$root/tests/bindings/runtimes/package.json" "$root/tests/bindings/runtimes/package-lock.json" "$deps/bindings/"
    (cd "$deps/bindings" && npm ci --force --cache "$deps/bindings/cache" --ignore-scripts --no-audit --no-fund)
    rm -rf "$deps/bindings/cache"
}

# A new prefix is Windows 7, so this sets Windows 10. The prefix is made in another folder and moved when it is complete.
make_wine_prefix()
{
    local new=$deps/wine.new
    rm -rf "$new" "$deps/wine" "$deps/wine-run"
    export WINEPREFIX=$new
    "$wine64" wineboot -i
    "$wine64" winecfg -v win10
    wineserver -k
    wineserver -w || [ $? -eq 2 ] # 2: the server was gone before
    mv -T "$new" "$deps/wine"
}

# Builds the libraries for 32-bit Windows in the same steps.
build_libraries_32()
{
    toolchain=$root/cmake/mingw-w64-i686.cmake
    prefix=$deps/prefix32
    rm -rf "$prefix"
    build_jsoncpp
    build_boost
}

# Builds the libraries under Microsoft's ABI in the same steps.
build_libraries_microsoft()
{
    toolchain=$root/cmake/microsoft-x86_64.cmake
    prefix=$kit/prefix
    rm -rf "$prefix"
    build_jsoncpp
    build_boost
    build_googletest -Dgtest_force_shared_crt=ON
}

wine_32_is_there()
{
    [ "$(dpkg-query -W -f '${db:Status-Status}' wine32:i386 2>/dev/null)" = installed ]
}

# Installs Debian's 32-bit Wine if apt can do so without removing or changing an installed package; otherwise prints why not.
# It is impossible if the machine has newer packages for its own architecture than apt offers for i386.
install_wine_32()
{
    export DEBIAN_FRONTEND=noninteractive
    as_root dpkg --add-architecture i386
    if as_root apt-get update && as_root apt-get install -y --no-install-recommends --no-remove --no-upgrade wine32:i386; then
        return
    fi
    # An architecture without packages would slow down every later update.
    as_root dpkg --remove-architecture i386
    as_root apt-get update
    return 1
}

# A separate prefix, because it is twice as large as the one that ordinary sessions copy.
make_wine_prefix_32()
{
    local new=$deps/wine32.new
    rm -rf "$new" "$deps/wine32"
    export WINEPREFIX=$new
    "$wine64" wineboot -i
    "$wine64" winecfg -v win10
    wineserver -k
    wineserver -w || [ $? -eq 2 ] # 2: the server was gone before
    mv -T "$new" "$deps/wine32"
}

# --- Running the steps -----------------------------------------------------------------------------------------------

number=0
total=14

# run TITLE NAME FUNCTION: runs one step, with its number, its duration and its log. Prints the end of the log on failure.
run()
{
    local title=$1 log=$deps/log/$2.log began status=0
    printf '[%d/%d] %s ... ' "$number" "$total" "$title"
    mkdir -p "$deps/log"
    began=$(now)
    # In a separate shell, because `set -e` has no effect within a condition.
    bash -c 'set -euo pipefail; . "$0" --functions; "$1"' "$root/scripts/setup.sh" "$3" >"$log" 2>&1 </dev/null 9>&- ||
        status=$?
    if [ $status -ne 0 ]; then
        printf 'failed after %s\n' "$(seconds_since "$began")"
        tail -n 25 "$log" | sed 's/^/    | /' >&2
        fail "step '$title' ended with status $status" "full log: $log" "correct the cause and run scripts/setup.sh again"
    fi
    seconds_since "$began"
}

# once TITLE NAME FUNCTION INPUTS: runs a step, unless it was done before with the same function and inputs.
once()
{
    number=$((number + 1))
    local stamp
    stamp=$deps/stamps/$2-$({ declare -f "$3" unpack cross_install; printf '%s\n' "$4"; } | sha256sum | cut -c1-16)
    [ ! -f "$stamp" ] || return 0
    mkdir -p "$deps/stamps"
    rm -f "$deps/stamps/$2-"*
    run "$1" "$2" "$3"
    touch "$stamp"
}

check_machine()
{
    command -v apt-get >/dev/null ||
        fail "this script needs Debian: apt-get was not found" \
            "install the equivalents of: ${packages[*]}" "and LLVM $oldest_llvm or newer, Boost $oldest_boost or newer"
}

ensure_packages()
{
    number=$((number + 1))
    local missing
    mapfile -t missing < <(missing_packages)
    [ ${#missing[@]} -gt 0 ] || return 0
    if [ "$(id -u)" -ne 0 ] && ! command -v sudo >/dev/null; then
        fail "packages are missing, and this user is not root and has no sudo" \
            "as root: apt-get install --no-install-recommends ${missing[*]}"
    fi
    run "Debian packages: ${missing[*]}" packages install_packages
}

# After a failure, the next attempt is a day later, because it takes half a minute.
try_wine_32()
{
    local log=$deps/log/wine32-packages.log
    mkdir -p "$deps/log"
    [ -z "$(find "$log" -mmin -1440 2>/dev/null)" ] && install_wine_32 >"$log" 2>&1 </dev/null
}

make_ready_for_32_bit()
{
    total=$((total + 2))
    once "Libraries for 32-bit Windows" libraries32 build_libraries_32 \
        "$(declare -f build_jsoncpp build_boost; cat "$root"/cmake/mingw-w64-*.cmake "$root"/cmake/boost/*
            i686-w64-mingw32-g++-posix -v 2>&1)"
    if wine_32_is_there || try_wine_32; then
        once "Wine prefix for 32-bit programs" wine32 make_wine_prefix_32 "$(dpkg-query -W wine64 wine32:i386)"
    else
        say "note: this machine cannot install Debian's wine32:i386; tests of 32-bit hosts will be skipped" \
            "(${deps##*/}/log/wine32-packages.log; the next attempt is after a day)"
    fi
}

make_ready_for_microsoft()
{
    local versions inputs
    versions=$(dpkg-query -W "clang-$llvm" "libc++-$llvm-dev" mingw-w64-x86-64-dev libwine)
    inputs=$(cat "$root/scripts/lib/microsoft.sh" "$root"/tests/microsoft/{include,runtime}/*)
    once "LLVM's standard library: sources" libcxx fetch_libcxx "$(declare -f source_entries fetch_sources) $llvm"
    once "LLVM's standard library and runtime under Microsoft's ABI" microsoft build_microsoft_kit "$versions $inputs"
    once "Libraries under Microsoft's ABI" microsoft-libraries build_libraries_microsoft \
        "$(declare -f build_jsoncpp build_boost build_googletest
            cat "$root/cmake/microsoft-x86_64.cmake" "$root"/cmake/boost/*) $versions $inputs $boost"
}

main()
{
    case ${1:-} in
        --help | -h) usage "$0"; return ;;
        --clean | --32-bit | '') ;;
        *) fail "unknown argument: $1" "scripts/setup.sh --help prints the options" ;;
    esac

    local began cross
    began=$(now)
    check_machine
    mkdir -p "$deps"
    exec 9>"$deps/lock"
    flock -n 9 || { say "waiting for another scripts/setup.sh in this tree"; flock 9; }
    [ "${1:-}" != --clean ] || find "$deps" -mindepth 1 -maxdepth 1 ! -name lock -exec rm -rf {} +

    choose_packages
    ensure_packages
    cross=$(cat "$toolchain" "$root"/cmake/boost/*; x86_64-w64-mingw32-g++-posix -v 2>&1)

    once "Tools of LLVM" tools link_tools "$llvm"
    once "Library sources" sources fetch_library_sources "$(declare -f source_entries fetch_sources) $boost"
    once "JsonCpp for Windows" jsoncpp build_jsoncpp "$cross"
    once "Boost for Windows" boost build_boost "$cross $boost"
    once "Boost's headers" headers link_boost_headers "$boost"
    once "GoogleTest for Windows" googletest build_googletest "$cross"
    once "Benchmark for Windows" benchmark build_benchmark "$cross"
    once "Node.js packages for the tests" node install_node_packages "$(cat "$root"/tests/node/package*.json; node --version)"
    once "Runtimes for the bindings' tests" bindings install_binding_runtimes \
        "$(cat "$root"/tests/bindings/runtimes/package*.json; node --version)"
    once "Wine prefix (Windows 10)" wine make_wine_prefix "$(dpkg-query -W wine64)"
    make_ready_for_microsoft
    [ "${1:-}" != --32-bit ] || make_ready_for_32_bit
    rm -rf "$deps/src" "$deps/build"
    say "Set-up: ready ($(seconds_since "$began"))"
}

# run() sources this file to get its functions.
[ "${1:-}" = --functions ] || main "$@"
