# orlindex_version_resource(<target> <description> [TRUST]): adds the version record to a Windows binary. With TRUST, the record
# names the root and the signers that the binary accepts, because builds of one version may differ in them.

function(orlindex_version_resource target description)
    cmake_parse_arguments(PARSE_ARGV 2 arg "TRUST" "" "")
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "EXECUTABLE")
        set(VERSION_FILE_TYPE VFT_APP)
        set(VERSION_ORIGINAL_NAME "${target}.exe")
    else()
        set(VERSION_FILE_TYPE VFT_DLL)
        set(VERSION_ORIGINAL_NAME "${target}.dll")
    endif()
    get_target_property(outputName ${target} OUTPUT_NAME)
    if(outputName)
        string(REGEX REPLACE "^.*[.]" "${outputName}." VERSION_ORIGINAL_NAME "${VERSION_ORIGINAL_NAME}")
    endif()

    set(VERSION_DESCRIPTION "${description}")
    set(VERSION_FLAGS 0)
    set(VERSION_SPECIAL_BUILD "")
    # The properties page must show that a binary trusts a root whose key is in a build tree.
    if(ORLINDEX_DEVELOPMENT_ROOT)
        string(APPEND VERSION_DESCRIPTION " (development root)")
        set(VERSION_FLAGS VS_FF_SPECIALBUILD)
        set(VERSION_SPECIAL_BUILD "VALUE \"SpecialBuild\", \"development root\"")
    endif()
    set(VERSION_TRUST "")
    if(arg_TRUST)
        # A backslash and a quotation mark must be doubled.
        string(REGEX REPLACE "([\\\"])" "\\1\\1" signers "${ORLINDEX_SIGNERS}")
        string(CONCAT VERSION_TRUST "VALUE \"PinnedRootSha256\", \"${ORLINDEX_PINNED_ROOT_SHA256}\"\n"
                      "            VALUE \"AcceptedSigners\", \"${signers}\"")
    endif()
    string(REPLACE "." "," VERSION_NUMBERS "${PROJECT_VERSION}")

    set(resource "${PROJECT_BINARY_DIR}/generated/${target}-version.rc")
    configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/version.rc.in" "${resource}" @ONLY)
    target_sources(${target} PRIVATE "${resource}")
endfunction()
