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
