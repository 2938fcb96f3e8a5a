# orlindex_sign(<target> OUTPUT <file> SIGNER <signer> [SECOND <signer>]): signs the file of a target and writes OUTPUT, as part
# of the default build. SECOND adds a second signature beside the first.
#
# Signers are the certificates that cmake/signing/Certificates.cmake makes for this build tree. The digest of the file is
# SHA-256. The top-level CMakeLists.txt looks for the tool, ORLINDEX_OSSLSIGNCODE, because its options depend on it.

function(orlindex_sign target)
    cmake_parse_arguments(PARSE_ARGV 1 SIGN "" "OUTPUT;SIGNER;SECOND" "")
    if(NOT SIGN_OUTPUT OR NOT SIGN_SIGNER)
        message(FATAL_ERROR "orlindex_sign(${target}): OUTPUT and SIGNER are required")
    endif()
    if(NOT ORLINDEX_OSSLSIGNCODE)
        message(
            FATAL_ERROR
                "osslsigncode was not found. The build needs it to sign plugin modules. Install it (scripts/setup.sh does "
                "on Debian), or leave the modules out: -DORLINDEX_BUILD_AGENT=OFF -DORLINDEX_BUILD_TESTS=OFF.")
    endif()
    set(key "${ORLINDEX_SIGNING_FOLDER}/signer.key")
    set(certificates "")
    foreach(signer IN ITEMS ${SIGN_SIGNER} ${SIGN_SECOND})
        if(NOT EXISTS "${ORLINDEX_SIGNING_FOLDER}/${signer}.pem")
            message(FATAL_ERROR "orlindex_sign(${target}): there is no signer '${signer}' in ${ORLINDEX_SIGNING_FOLDER}")
        endif()
        list(APPEND certificates "${ORLINDEX_SIGNING_FOLDER}/${signer}.pem")
    endforeach()

    set(program "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/signing/SignFile.cmake")
    add_custom_command(
        OUTPUT "${SIGN_OUTPUT}"
        COMMAND "${CMAKE_COMMAND}" "-DTOOL=${ORLINDEX_OSSLSIGNCODE}" "-DCERTIFICATES=${certificates}" "-DKEY=${key}"
                "-DINPUT=$<TARGET_FILE:${target}>" "-DOUTPUT=${SIGN_OUTPUT}" -P "${program}"
        DEPENDS ${target} "$<TARGET_FILE:${target}>" ${certificates} "${key}" "${program}"
        COMMENT "Signing ${target} by ${SIGN_SIGNER}"
        VERBATIM)
    string(MD5 id "${SIGN_OUTPUT}")
    string(SUBSTRING "${id}" 0 8 id)
    add_custom_target(sign-${target}-${SIGN_SIGNER}-${id} ALL DEPENDS "${SIGN_OUTPUT}")
endfunction()
