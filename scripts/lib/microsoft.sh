# Makes what a build under Microsoft's C++ ABI needs on this system. Source this file after common.sh; do not run it. Only tests
# use such a build: it runs under Wine with LLVM's standard library, and nothing of it is shipped.
#
#     fetch_libcxx        gets the sources of LLVM's standard library, as only its headers and its build for Linux are packaged
#     build_microsoft_kit  makes .deps/microsoft/lib: import libraries for the DLLs of Wine, the runtime of tests/microsoft, and
#                         LLVM's standard library
# shellcheck shell=bash
# shellcheck disable=SC2154 # llvm and root come from the script that sources this file

kit=$deps/microsoft
libcxx=$kit/libcxx
wine_dlls=/usr/lib/$(uname -m)-linux-gnu/wine/x86_64-windows

microsoft_target=(
    --target=x86_64-pc-windows-msvc -fms-compatibility-version=19.40 -fgnuc-version=12.0 -D_UCRT -D_HAS_EXCEPTIONS=1
    -D_WIN32_WINNT=0x0A00 -O2
)
platform_headers=(-isystem /usr/share/mingw-w64/include)

# Not built: what only concerns other systems, and the time zones, which need newer headers.
libcxx_sources()
{
    (
        cd "$libcxx"
        find . -name '*.cpp' ! -path './support/*' ! -path './pstl/*' ! -path './experimental/*' ! -path './ryu/*' \
            ! -name int128_builtins.cpp ! -name iostream_init.cpp ! -name std_stream.cpp
        find ./ryu ./support/win32 -name '*.cpp'
    ) | sed 's|^\./||' | sort
}

# The archive has 160 MB, of which less than 2 are needed.
fetch_libcxx()
{
    local downloads=$deps/downloads-llvm
    fetch_sources "$downloads" "llvm-toolchain-$llvm"
    rm -rf "$libcxx"
    mkdir -p "$libcxx"
    tar -xf "$downloads"/llvm-toolchain-*.orig.tar.* -C "$libcxx" --strip-components=3 --wildcards '*/libcxx/src'
    rm -rf "$downloads"
}

# import_library NAME PATTERN DLL...: makes an import library of the exports of Wine's DLLs that match the pattern.
import_library()
{
    local name=$1 pattern=$2 dll libraries=()
    shift 2
    for dll in "$@"; do
        {
            printf 'LIBRARY %s.dll\nEXPORTS\n' "$dll"
            "$deps/tools/llvm-readobj" --coff-exports "$wine_dlls/$dll.dll" |
                awk -v pattern="$pattern" '/Name: ./ && $2 ~ pattern { print "    \"" $2 "\"" }'
        } >"$work/$dll.def"
        "$deps/tools/llvm-dlltool" -m i386:x86-64 -d "$work/$dll.def" -l "$work/$dll.lib"
        libraries+=("$work/$dll.lib")
    done
    "$deps/tools/llvm-lib" /nologo "/out:$kit/lib/$name.lib" "${libraries[@]}"
}

import_libraries()
{
    local dll
    import_library ucrt . ucrtbase
    import_library vcruntime . vcruntime140 vcruntime140_1
    import_library msvcprt . msvcp140
    import_library kernel32 '^[^_]' kernel32
    # The rest of ntdll are functions of C, which would come before those of the C runtime.
    import_library ntdll '^(Nt|Rtl|Ldr)' ntdll
    for dll in user32 gdi32 shell32 ole32 oleaut32 comdlg32 advapi32 wintrust crypt32 shlwapi bcrypt version secur32 userenv \
        dbghelp psapi winhttp ws2_32 mswsock ncrypt comctl32 dwmapi uxtheme; do
        import_library $dll . $dll
    done
    # CMake links it with every program; nothing is used of it.
    printf 'LIBRARY winspool.drv\nEXPORTS\n' >"$work/winspool.def"
    "$deps/tools/llvm-dlltool" -m i386:x86-64 -d "$work/winspool.def" -l "$kit/lib/winspool.lib"
    cp /usr/x86_64-w64-mingw32/lib/libuuid.a "$kit/lib/uuid.lib"
}

# The part of Microsoft's runtime that is linked into each module: tests/microsoft/runtime.
static_runtime()
{
    local sources=$root/tests/microsoft/runtime file
    local c=("$deps/tools/clang" "${microsoft_target[@]}" -Wno-everything "${platform_headers[@]}")
    local cxx=("$deps/tools/clang++" "${microsoft_target[@]}" -Wno-everything -std=c++17 -fexceptions -fcxx-exceptions -nostdinc++
        -isystem "$root/tests/microsoft/include" "${platform_headers[@]}")
    mkdir -p "$work/runtime"
    for file in "$sources"/*.{c,S}; do
        "${c[@]}" -c "$file" -o "$work/runtime/${file##*/}.obj"
    done
    "${c[@]}" -DWIDE_ARGUMENTS -c "$sources/program.c" -o "$work/runtime/wide-program.obj"
    "${c[@]}" -DWINDOWS -c "$sources/program.c" -o "$work/runtime/window-program.obj"
    for file in "$sources"/*.cpp; do
        "${cxx[@]}" -c "$file" -o "$work/runtime/${file##*/}.obj"
    done
    "$deps/tools/llvm-lib" /nologo "/out:$kit/lib/msvcrt.lib" "$work"/runtime/*.obj
    # The compiler asks for it by name; initializers.c has its content.
    printf 'int oldNames;\n' >"$work/oldnames.c"
    "${c[@]}" -c "$work/oldnames.c" -o "$work/oldnames.obj"
    "$deps/tools/llvm-lib" /nologo "/out:$kit/lib/oldnames.lib" "$work/oldnames.obj"
}

standard_library()
{
    local headers=$root/tests/microsoft/include cxx
    cxx=("$deps/tools/clang++" "${microsoft_target[@]}" -Wno-everything -std=c++23 -fexceptions -fcxx-exceptions -nostdinc++
        -D_LIBCPP_BUILDING_LIBRARY -D_LIBCPP_DISABLE_VISIBILITY_ANNOTATIONS -D_LIBCPP_NO_AUTO_LINK
        -D_CRT_SECURE_NO_WARNINGS -D_CRT_RAND_S -DUNICODE
        -isystem "$headers" -isystem "$kit/include/c++/v1" "${platform_headers[@]}"
        -include "$headers/Runtime.h" "-I$libcxx")
    mkdir -p "$work/libcxx"
    # shellcheck disable=SC2016 # expanded by the inner shell
    libcxx_sources | xargs -P "$jobs" -I '{}' sh -c '
        source=$1 object=$2/$(printf %s "$3" | tr / _).obj
        shift 3
        exec "$@" -c "$source" -o "$object"' sh "$libcxx/{}" "$work/libcxx" '{}' "${cxx[@]}"
    "$deps/tools/llvm-lib" /nologo "/out:$kit/lib/libc++.lib" "$work"/libcxx/*.obj
}

build_microsoft_kit()
{
    local work=$kit/work
    rm -rf "$work" "${kit:?}/lib"
    mkdir -p "$work" "$kit/lib" "$kit/include"
    ln -sfT "/usr/lib/llvm-$llvm/include/c++" "$kit/include/c++"
    import_libraries
    static_runtime
    standard_library
    rm -rf "$work"
}
