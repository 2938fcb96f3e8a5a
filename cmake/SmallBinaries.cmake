# Keeps Orlindex.dll below the bound in tests/package. Hosts ship the DLL, and none of its work needs the code that CMake's
# default -O3 unrolls. The linker removes code that nothing refers to. The runtime's printer of uncaught exceptions is
# replaced (src/base/TerminateHandler.cpp).

if(MINGW)
    foreach(language C CXX)
        string(REPLACE "-O3" "-O2" CMAKE_${language}_FLAGS_RELEASE "${CMAKE_${language}_FLAGS_RELEASE}")
    endforeach()
    add_compile_options(-ffunction-sections -fdata-sections)
    add_link_options($<$<CONFIG:Release>:-Wl,--gc-sections>)
endif()

# orlindex_build_for_size(<target> <regular expression> [<source>...]): builds the matching sources of the target for size, except
# for the named ones.
function(orlindex_build_for_size target pattern)
    if(MINGW)
        get_target_property(sources ${target} SOURCES)
        list(FILTER sources INCLUDE REGEX "${pattern}")
        list(REMOVE_ITEM sources ${ARGN})
        set_source_files_properties(${sources} PROPERTIES COMPILE_OPTIONS "$<$<CONFIG:Release>:-Os>")
    endif()
endfunction()
