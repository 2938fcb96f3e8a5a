# ORLINDEX_TIDY: clang-tidy runs with each compilation, so that the build system knows which sources to check again.

option(ORLINDEX_TIDY "Run clang-tidy with each compilation" OFF)
if(ORLINDEX_TIDY)
    find_program(ORLINDEX_CLANG_TIDY clang-tidy REQUIRED DOC "Static checks")
    # clang understands the command lines of the cross compiler, but does not find its headers for posix threads.
    set(tidy "${ORLINDEX_CLANG_TIDY}" --quiet --warnings-as-errors=* --extra-arg-before=--target=x86_64-w64-mingw32)
    foreach(folder IN LISTS CMAKE_CXX_IMPLICIT_INCLUDE_DIRECTORIES)
        if(folder MATCHES "/c[+][+]" OR NOT folder MATCHES "/lib/gcc/")
            list(APPEND tidy "--extra-arg=-isystem${folder}")
        endif()
    endforeach()
    set(CMAKE_CXX_CLANG_TIDY "${tidy}")
endif()
