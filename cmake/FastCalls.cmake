# orlindex_build_for_calls(<target> <regular expression>): makes forwarded calls fast in two ways. The target accesses its
# variables directly; by default the compiler assumes that a variable of another source may be in another DLL, and loads its
# address first. In the matching sources, inline functions are really inlined.
function(orlindex_build_for_calls target pattern)
    if(MINGW)
        if(CMAKE_SIZEOF_VOID_P EQUAL 8)
            target_compile_options(${target} PRIVATE -mcmodel=small)
        endif()
        get_target_property(sources ${target} SOURCES)
        list(FILTER sources INCLUDE REGEX "${pattern}")
        set_source_files_properties(
            ${sources} PROPERTIES COMPILE_OPTIONS
                                  "$<$<CONFIG:Release>:--param=max-inline-insns-single=300;--param=inline-unit-growth=200>")
    endif()
endfunction()
