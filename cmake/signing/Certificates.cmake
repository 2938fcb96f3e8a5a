# Makes the certificates of a build tree, once, in <build>/signing: three roots and the signers below them, accepted ones and
# ones that must be refused. Another build tree may share them. Each root has <name>.key, <name>.pem and <name>.der. Each signer has <name>-leaf.pem, and
# <name>.pem, which also contains its root. All signers use signer.key.

set(ORLINDEX_SIGNING_FOLDER "${PROJECT_BINARY_DIR}/signing"
    CACHE PATH "Folder of the development root, of its key and of the signers below it")

function(orlindex_openssl)
    execute_process(COMMAND "${ORLINDEX_OPENSSL}" ${ARGN} WORKING_DIRECTORY "${ORLINDEX_SIGNING_FOLDER}" RESULT_VARIABLE status
                    OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
        list(JOIN ARGN " " arguments)
        message(FATAL_ERROR "openssl ${arguments}\nended with ${status}:\n${output}")
    endif()
endfunction()

function(orlindex_make_root name commonName)
    orlindex_openssl(
        req
        -x509
        -newkey
        rsa:2048
        -nodes
        -sha256
        -days
        3650
        -config
        openssl.cnf
        -extensions
        root
        -subj
        "/CN=${commonName}"
        -keyout
        ${name}.key
        -out
        ${name}.pem)
    orlindex_openssl(x509 -in ${name}.pem -outform DER -out ${name}.der)
endfunction()

# orlindex_make_signer(<name> <root> <common name> [options of `openssl ca` for validity and extensions])
function(orlindex_make_signer name root commonName)
    set(options ${ARGN})
    if(NOT options)
        set(options -days 3650)
    endif()
    orlindex_openssl(req -new -utf8 -key signer.key -config openssl.cnf -subj "/CN=${commonName}" -out issued/request.pem)
    orlindex_openssl(
        ca
        -batch
        -notext
        -config
        openssl.cnf
        -cert
        ${root}.pem
        -keyfile
        ${root}.key
        -in
        issued/request.pem
        -out
        ${name}-leaf.pem
        ${options})
    file(READ "${ORLINDEX_SIGNING_FOLDER}/${name}-leaf.pem" leaf)
    file(READ "${ORLINDEX_SIGNING_FOLDER}/${root}.pem" rootCertificate)
    file(WRITE "${ORLINDEX_SIGNING_FOLDER}/${name}.pem" "${leaf}${rootCertificate}")
endfunction()

function(orlindex_make_certificates)
    # If this was interrupted, or if one of the two files changed, everything is made again.
    set(recipe "${CMAKE_CURRENT_FUNCTION_LIST_DIR}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${recipe}/openssl.cnf")
    file(SHA256 "${recipe}/openssl.cnf" configuration)
    file(SHA256 "${recipe}/Certificates.cmake" program)
    set(stamp "${ORLINDEX_SIGNING_FOLDER}/made-by-${configuration}-${program}")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${ORLINDEX_SIGNING_FOLDER}/root.der")
    if(EXISTS "${stamp}")
        return()
    endif()
    file(REMOVE_RECURSE "${ORLINDEX_SIGNING_FOLDER}")
    file(MAKE_DIRECTORY "${ORLINDEX_SIGNING_FOLDER}/issued")
    file(CHMOD "${ORLINDEX_SIGNING_FOLDER}" DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE)
    file(COPY "${recipe}/openssl.cnf" DESTINATION "${ORLINDEX_SIGNING_FOLDER}")
    file(TOUCH "${ORLINDEX_SIGNING_FOLDER}/issued/index.txt") # the database of `openssl ca`
    orlindex_openssl(genrsa -out signer.key 2048)

    orlindex_make_root(root "Orlindex Development Root")
    orlindex_make_signer(good root "Kestrany, Inc.")
    orlindex_make_signer(asia root "Kestrany Asia Pte")
    orlindex_make_signer(wrong-case root "KESTRANY, INC.")
    orlindex_make_signer(trailing-space root "Kestrany, Inc. ")
    orlindex_make_signer(no-point root "Kestrany, Inc")
    orlindex_make_signer(asia-point root "Kestrany Asia Pte.")
    orlindex_make_signer(stranger root "Somebody Else")
    string(ASCII 239 188 171 fullWidthK) # U+FF2B in UTF-8: a conversion to a narrow code page may turn it into K
    orlindex_make_signer(look-alike root "${fullWidthK}estrany, Inc.")
    orlindex_make_signer(pinned-expired root "Kestrany, Inc." -startdate 20200101000000Z -enddate 20210101000000Z)

    orlindex_make_root(unknown-root "Orlindex Unknown Root")
    orlindex_make_signer(other-root unknown-root "Kestrany, Inc.")

    # This root is for tests that add it to the user's store. Below an unknown root, the platform does not report the age.
    orlindex_make_root(trusted-root "Orlindex Trusted Root")
    orlindex_make_signer(trusted trusted-root "Kestrany, Inc.")
    orlindex_make_signer(expired trusted-root "Kestrany, Inc." -startdate 20200101000000Z -enddate 20210101000000Z)
    orlindex_make_signer(wrong-purpose trusted-root "Kestrany, Inc." -days 3650 -extensions other_purpose)

    orlindex_openssl(
        req
        -x509
        -key
        signer.key
        -sha1
        -days
        3650
        -config
        openssl.cnf
        -extensions
        signer
        -subj
        "/CN=Kestrany, Inc."
        -out
        self-signed.pem)
    orlindex_openssl(x509 -in self-signed.pem -outform DER -out self-signed.der)

    file(REMOVE_RECURSE "${ORLINDEX_SIGNING_FOLDER}/issued")
    file(TOUCH "${stamp}")
endfunction()
