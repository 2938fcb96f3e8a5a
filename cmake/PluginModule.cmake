# orlindex_add_plugin(<target> SOURCES <file>... [DEFINITIONS <definition>...] [SYMBOL 64|32|none])
#
# Builds a client plugin module: a DLL whose sources define `ISSOClientFactory* GetSSOClientFactory()` in the global namespace.
# The DLL exports only this function, under the name that a 64-bit or a 32-bit process looks up (the default is that of the
# build), or nothing. A module definition file sets the name, because mingw-w64 decorates names in another way.

function(orlindex_add_plugin target)
    cmake_parse_arguments(PARSE_ARGV 1 PLUGIN "" "SYMBOL" "SOURCES;DEFINITIONS")
    if(PLUGIN_UNPARSED_ARGUMENTS OR NOT PLUGIN_SOURCES)
        message(FATAL_ERROR "orlindex_add_plugin(${target}): SOURCES are missing, or unknown: ${PLUGIN_UNPARSED_ARGUMENTS}")
    endif()
    math(EXPR bits "${CMAKE_SIZEOF_VOID_P} * 8")
    if(NOT PLUGIN_SYMBOL)
        set(PLUGIN_SYMBOL ${bits})
    endif()

    set(symbol64 "?GetSSOClientFactory@@YAPEAVISSOClientFactory@IdentityServices@Kestrany@@XZ")
    set(symbol32 "?GetSSOClientFactory@@YAPAVISSOClientFactory@IdentityServices@Kestrany@@XZ")
    set(symbolnone "")
    if(NOT DEFINED symbol${PLUGIN_SYMBOL})
        message(FATAL_ERROR "orlindex_add_plugin(${target}): SYMBOL is 64, 32 or none, not '${PLUGIN_SYMBOL}'")
    endif()
    set(export "${symbol${PLUGIN_SYMBOL}}")
    if(MSVC)
        set(compiled "${symbol${bits}}")
    else()
        set(compiled "_Z19GetSSOClientFactoryv")
    endif()
    if(export AND NOT export STREQUAL compiled)
        string(APPEND export " = ${compiled}")
    endif()
    set(definitionFile "${CMAKE_CURRENT_BINARY_DIR}/${target}.def")
    file(CONFIGURE OUTPUT "${definitionFile}" CONTENT "EXPORTS\n    @export@\n" @ONLY)

    add_library(${target} SHARED ${PLUGIN_SOURCES} "${definitionFile}")
    target_compile_definitions(${target} PRIVATE ${PLUGIN_DEFINITIONS})
    target_link_libraries(${target} PRIVATE orlindex_plugin_contract orlindex_warnings)
    if(MINGW)
        # Without this, a module without exports would export everything.
        target_link_options(${target} PRIVATE -Wl,--exclude-all-symbols)
    endif()
    # The module is not signed yet. A program must not find it by accident, so it is in a separate folder.
    set_target_properties(${target} PROPERTIES PREFIX "" RUNTIME_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/unsigned"
                                               ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/unsigned")
endfunction()
