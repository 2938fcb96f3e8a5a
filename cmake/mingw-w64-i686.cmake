# Cross build for 32-bit Windows: as the one for 64 bit, with the compilers, libraries and addresses of the other processor.
# Its libraries are made by scripts/setup.sh --32-bit.

include("${CMAKE_CURRENT_LIST_DIR}/mingw-w64-x86_64.cmake")

set(CMAKE_SYSTEM_PROCESSOR i686)
foreach(program C_COMPILER CXX_COMPILER RC_COMPILER DLLTOOL AR RANLIB)
    string(REPLACE x86_64 i686 CMAKE_${program} "${CMAKE_${program}}")
endforeach()
set(CMAKE_FIND_ROOT_PATH "${orlindexRoot}/.deps/prefix32" /usr/i686-w64-mingw32)

foreach(kind EXE SHARED MODULE)
    string(REPLACE " -Wl,--high-entropy-va" "" CMAKE_${kind}_LINKER_FLAGS_INIT "${CMAKE_${kind}_LINKER_FLAGS_INIT}")
    string(REPLACE 0x180000000 0x10000000 CMAKE_${kind}_LINKER_FLAGS_INIT "${CMAKE_${kind}_LINKER_FLAGS_INIT}")
endforeach()
