# Keeps Orlindex.dll below the size that tests/package bounds: hosts ship it, and none of its work is worth the code that
# CMake's default -O3 unrolls. What nothing refers to is left out, and so is the runtime's printer of uncaught exceptions
# (src/base/TerminateHandler.cpp).

if(MINGW)
    foreach(language C CXX)
        string(REPLACE "-O3" "-O2" CMAKE_${language}_FLAGS_RELEASE "${CMAKE_${language}_FLAGS_RELEASE}")
    endforeach()
    add_compile_options(-ffunction-sections -fdata-sections)
    add_link_options($<$<CONFIG:Release>:-Wl,--gc-sections>)
endif()

# orlindex_build_for_size(<target> <regular expression> [<source>...]): the target's sources that match, but those named.
function(orlindex_build_for_size target pattern)
    if(MINGW)
        get_target_property(sources ${target} SOURCES)
        list(FILTER sources INCLUDE REGEX "${pattern}")
        list(REMOVE_ITEM sources ${ARGN})
        set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "$<$<CONFIG:Release>:-Os>")
    endif()
endfunction()

# orlindex_build_for_calls(<target> <regular expression>): the target refers to its variables directly, where the compiler
# would take each of another source for one of another DLL and load its address first; and what the matching sources call
# inline is made inline. Both are a good part of a forwarded call.
function(orlindex_build_for_calls target pattern)
    if(MINGW)
        if(CMAKE_SIZEOF_VOID_P EQUAL 8)
            target_compile_options(${target} PRIVATE -mcmodel=small)
        endif()
        get_target_property(sources ${target} SOURCES)
        list(FILTER sources INCLUDE REGEX "${pattern}")
        set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS
            "$<$<CONFIG:Release>:--param=max-inline-insns-single=300;--param=inline-unit-growth=200>")
    endif()
endfunction()
