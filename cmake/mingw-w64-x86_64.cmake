# Cross build for 64-bit Windows with mingw-w64's g++ (posix threads), run under Wine. Libraries come from the tree's
# own .deps folder, made by scripts/setup.sh.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_DLLTOOL x86_64-w64-mingw32-dlltool)
set(CMAKE_AR x86_64-w64-mingw32-gcc-ar-posix)
set(CMAKE_RANLIB x86_64-w64-mingw32-gcc-ranlib-posix)

get_filename_component(orlindexRoot "${CMAKE_CURRENT_LIST_DIR}" DIRECTORY)
set(CMAKE_CROSSCOMPILING_EMULATOR "${orlindexRoot}/scripts/wine-run")

list(APPEND CMAKE_FIND_ROOT_PATH "${orlindexRoot}/.deps/prefix" /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# No path of the building machine goes into a binary; a smashed stack frame or an overrun buffer ends the process.
set(orlindexCompileFlags "-ffile-prefix-map=${orlindexRoot}=. -fstack-protector-strong")
foreach(language C CXX)
    set(CMAKE_${language}_FLAGS_INIT "${orlindexCompileFlags}")
    set(CMAKE_${language}_FLAGS_RELEASE_INIT "-D_FORTIFY_SOURCE=2")
endforeach()

# Compiler runtime inside the binary: a host installs one file. No time stamp: the same sources give the same bytes.
set(orlindexLinkFlags "-static -Wl,--no-insert-timestamp -Wl,--dynamicbase -Wl,--nxcompat -Wl,--high-entropy-va")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "${orlindexLinkFlags}")
    set(CMAKE_${kind}_LINKER_FLAGS_RELEASE_INIT "-s")
endforeach()
# The linker would derive a DLL's base from its output file name, and a renamed build would differ.
string(APPEND CMAKE_SHARED_LINKER_FLAGS_INIT " -Wl,--image-base=0x180000000")
string(APPEND CMAKE_MODULE_LINKER_FLAGS_INIT " -Wl,--image-base=0x180000000")
