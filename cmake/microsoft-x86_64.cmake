# Build for 64-bit Windows under Microsoft's C++ ABI, for tests alone: clang-cl and lld-link, the headers of mingw-w64, LLVM's
# standard library, and in the place of Microsoft's runtime the stand-ins of tests/microsoft. Programs run under Wine, whose
# DLLs they use. scripts/setup.sh makes .deps/microsoft. What is shipped is built by another compiler.

set(ORLINDEX_MICROSOFT_STAND_INS ON)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

get_filename_component(orlindexRoot "${CMAKE_CURRENT_LIST_DIR}" DIRECTORY)
set(tools "${orlindexRoot}/.deps/tools")
set(kit "${orlindexRoot}/.deps/microsoft")
set(standIns "${orlindexRoot}/tests/microsoft/include")
set(platform "/imsvc /usr/share/mingw-w64/include")

set(CMAKE_C_COMPILER "${tools}/clang-cl")
set(CMAKE_CXX_COMPILER "${tools}/clang-cl")
set(CMAKE_C_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_CXX_COMPILER_TARGET x86_64-pc-windows-msvc)
set(CMAKE_LINKER "${tools}/lld-link")
set(CMAKE_AR "${tools}/llvm-lib")
set(CMAKE_RC_COMPILER "${tools}/llvm-rc")
set(CMAKE_MT "${tools}/llvm-mt")
set(CMAKE_CROSSCOMPILING_EMULATOR "${orlindexRoot}/scripts/wine-run")

# There is no debug runtime, which CMake's own trials would ask for.
set(CMAKE_POLICY_DEFAULT_CMP0091 NEW)
set(CMAKE_MSVC_RUNTIME_LIBRARY MultiThreadedDLL)
set(CMAKE_TRY_COMPILE_CONFIGURATION Release)

# Without a version of gcc, the headers of mingw-w64 cannot be parsed. /X: no headers of the building machine.
set(common "-fms-compatibility-version=19.40 /clang:-fgnuc-version=12.0 /X -D_UCRT -D_CRT_SECURE_NO_WARNINGS")
# Other projects are built without warnings: their /Wall means every warning that this compiler has.
if(NOT CMAKE_SOURCE_DIR STREQUAL orlindexRoot)
    string(APPEND common " -w")
endif()
set(CMAKE_C_FLAGS_INIT "${common} ${platform}")
# As /imsvc, the standard library would come after the compiler's own headers, which it must precede.
string(CONCAT CMAKE_CXX_FLAGS_INIT "${common} -D_HAS_EXCEPTIONS=1 -D_LIBCPP_DISABLE_VISIBILITY_ANNOTATIONS "
              "-D_LIBCPP_NO_AUTO_LINK /clang:-isystem${standIns} /clang:-isystem${kit}/include/c++/v1 ${platform} "
              "/FI${standIns}/Runtime.h")
set(CMAKE_RC_FLAGS_INIT "-I/usr/share/mingw-w64/include")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "/libpath:${kit}/lib /manifest:no")
endforeach()
set(CMAKE_C_STANDARD_LIBRARIES "kernel32.lib" CACHE STRING "" FORCE)
set(CMAKE_CXX_STANDARD_LIBRARIES
    "libc++.lib msvcprt.lib kernel32.lib user32.lib gdi32.lib winspool.lib shell32.lib ole32.lib oleaut32.lib uuid.lib comdlg32.lib advapi32.lib"
    CACHE STRING "" FORCE)

set(CMAKE_FIND_ROOT_PATH "${kit}/prefix")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
