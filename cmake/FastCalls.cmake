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
