# Trust as build data: the SHA-256 of the pinned root certificate and the names of the signers. Writes
# <build>/generated/BuildData.h and sets
#   ORLINDEX_DEVELOPMENT_ROOT   the pinned root is the one of this build tree
#   ORLINDEX_OWN_TRUST          the build accepts modules that are signed in this build tree: its own root, the default names
#   ORLINDEX_PINNED_ROOT_SHA256 the digest in hexadecimal digits

set(ORLINDEX_PINNED_ROOT ""
    CACHE FILEPATH "Root certificate (PEM or DER) that the product accepts; empty: a development root of this build tree")
set(orlindexDefaultSigners "Kestrany, Inc." "Kestrany Asia Pte")
set(ORLINDEX_SIGNERS "${orlindexDefaultSigners}" CACHE STRING
                                                       "Names of the signers that the product accepts, separated by semicolons")

find_program(ORLINDEX_OPENSSL openssl DOC "OpenSSL's command line tool")
if(NOT ORLINDEX_OPENSSL)
    message(FATAL_ERROR "openssl was not found. The build needs it to read and make certificates. Install it (on Debian, "
                        "scripts/setup.sh does; Git for Windows contains it), or name it with -DORLINDEX_OPENSSL=<program>.")
endif()

# Checks ORLINDEX_PINNED_ROOT and writes its DER form.
function(orlindex_read_pinned_root der)
    set(wayOut "Give a root certificate in PEM or DER form with -DORLINDEX_PINNED_ROOT=<file>, or an empty value for a "
               "development root.")
    get_filename_component(file "${ORLINDEX_PINNED_ROOT}" ABSOLUTE BASE_DIR "${PROJECT_SOURCE_DIR}")
    if(NOT EXISTS "${file}" OR IS_DIRECTORY "${file}")
        message(FATAL_ERROR "ORLINDEX_PINNED_ROOT names no file: ${file}\n" ${wayOut})
    endif()
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")

    # The checks below need one form.
    set(pem "${der}.pem")
    execute_process(COMMAND "${ORLINDEX_OPENSSL}" x509 -in "${file}" -out "${pem}" RESULT_VARIABLE status OUTPUT_VARIABLE output
                    ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "ORLINDEX_PINNED_ROOT is not a certificate: ${file}\n${output}\n" ${wayOut})
    endif()
    file(STRINGS "${file}" beginnings REGEX "-----BEGIN.* CERTIFICATE-----")
    list(LENGTH beginnings count)
    if(count GREATER 1)
        message(FATAL_ERROR "ORLINDEX_PINNED_ROOT holds ${count} certificates instead of one: ${file}\n" ${wayOut})
    endif()
    execute_process(COMMAND "${ORLINDEX_OPENSSL}" verify -CAfile "${pem}" -check_ss_sig -no_check_time "${pem}"
                    RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        message(FATAL_ERROR "ORLINDEX_PINNED_ROOT is not a root certificate (signed by itself): ${file}\n${output}\n" ${wayOut})
    endif()
    execute_process(COMMAND "${ORLINDEX_OPENSSL}" x509 -in "${pem}" -outform DER -out "${der}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(orlindex_check_signers)
    if(NOT ORLINDEX_SIGNERS)
        message(FATAL_ERROR "ORLINDEX_SIGNERS is empty: the library could not load any plugin module. Name the accepted "
                            "signers, separated by semicolons.")
    endif()
    foreach(signer IN LISTS ORLINDEX_SIGNERS)
        # Names are compared byte for byte with the system's text in its ANSI code page. An empty name would accept a
        # certificate without a name. A name with an escaped semicolon would be split into such names.
        if(NOT signer MATCHES "^[ -:<-~]+$")
            message(FATAL_ERROR "ORLINDEX_SIGNERS holds a name that is empty or not plain ASCII: '${signer}'")
        endif()
    endforeach()
endfunction()

# Writes BuildData.h for the DER file of a root.
function(orlindex_write_build_data der)
    file(SHA256 "${der}" digest)
    set(ORLINDEX_PINNED_ROOT_SHA256 "${digest}" PARENT_SCOPE)
    string(REGEX REPLACE "(..)" "0x\\1, " PINNED_ROOT_BYTES "${digest}")
    string(REGEX REPLACE ", $" "" PINNED_ROOT_BYTES "${PINNED_ROOT_BYTES}")

    # Each name is a separate literal, so that no digit can follow its \0. The last literal ends with its own NUL.
    set(TRUSTED_SIGNERS ${ORLINDEX_SIGNERS})
    list(TRANSFORM TRUSTED_SIGNERS REPLACE "([\\\"])" "\\\\\\1")
    list(JOIN TRUSTED_SIGNERS "\\0\"\n    \"" TRUSTED_SIGNERS)

    if(ORLINDEX_DEVELOPMENT_ROOT)
        set(DEVELOPMENT_ROOT true)
    else()
        set(DEVELOPMENT_ROOT false)
    endif()
    configure_file("${CMAKE_CURRENT_FUNCTION_LIST_DIR}/BuildData.h.in" "${PROJECT_BINARY_DIR}/generated/BuildData.h" @ONLY)
endfunction()

orlindex_check_signers()
include(signing/Certificates)
orlindex_make_certificates()

if(ORLINDEX_PINNED_ROOT)
    set(ORLINDEX_DEVELOPMENT_ROOT OFF)
    file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/generated")
    orlindex_read_pinned_root("${PROJECT_BINARY_DIR}/generated/pinned-root.der")
    orlindex_write_build_data("${PROJECT_BINARY_DIR}/generated/pinned-root.der")
    message(STATUS "Pinned root: ${ORLINDEX_PINNED_ROOT}")
else()
    set(ORLINDEX_DEVELOPMENT_ROOT ON)
    orlindex_write_build_data("${ORLINDEX_SIGNING_FOLDER}/root.der")
    message(
        WARNING "DEVELOPMENT ROOT: this build accepts modules that are signed below its own root. The key of this root "
                "is in ${ORLINDEX_SIGNING_FOLDER}. Do not ship this build. To make a build for shipping, name the maker's root "
                "certificate with -DORLINDEX_PINNED_ROOT=<file>.")
endif()

if(ORLINDEX_DEVELOPMENT_ROOT AND "${ORLINDEX_SIGNERS}" STREQUAL "${orlindexDefaultSigners}")
    set(ORLINDEX_OWN_TRUST ON)
else()
    set(ORLINDEX_OWN_TRUST OFF)
endif()
