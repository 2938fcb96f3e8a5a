# orlindex_collect_licenses(<folder>): copies the licence texts of what is linked into the binaries from its sources and
# packages, and writes a list of them. Sets ORLINDEX_MISSING_LICENSES to the names of the texts that were not found.

# Copies one text, from the first source that exists: plain FILES, or MEMBER of ARCHIVE.
function(orlindex_collect_license folder name)
    cmake_parse_arguments(PARSE_ARGV 2 TEXT "" "ARCHIVE;MEMBER" "FILES")
    set(target "${folder}/${name}.txt")
    foreach(file IN LISTS TEXT_FILES)
        if(EXISTS "${file}")
            configure_file("${file}" "${target}" COPYONLY)
            return()
        endif()
    endforeach()
    file(GLOB archive "${TEXT_ARCHIVE}")
    if(TEXT_ARCHIVE AND archive)
        # GNU tar stops after the member. CMake's own reader would unpack the whole archive of half a gigabyte.
        execute_process(COMMAND tar -xOf "${archive}" --wildcards --no-wildcards-match-slash --occurrence=1 "${TEXT_MEMBER}"
                        RESULT_VARIABLE status OUTPUT_FILE "${target}" ERROR_VARIABLE output)
        if(status EQUAL 0)
            return()
        endif()
    endif()
    file(REMOVE "${target}")
    set(ORLINDEX_MISSING_LICENSES ${ORLINDEX_MISSING_LICENSES} ${name} PARENT_SCOPE)
endfunction()

function(orlindex_collect_licenses folder)
    set(ORLINDEX_MISSING_LICENSES "")
    set(downloads "${PROJECT_SOURCE_DIR}/.deps/downloads")
    set(vcpkg "${VCPKG_INSTALLED_DIR}/${VCPKG_TARGET_TRIPLET}/share")
    file(MAKE_DIRECTORY "${folder}")

    orlindex_collect_license("${folder}" JsonCpp FILES "${vcpkg}/jsoncpp/copyright" ARCHIVE
                             "${downloads}/libjsoncpp_*.orig.tar.*" MEMBER "*/LICENSE")
    orlindex_collect_license("${folder}" Boost FILES "${vcpkg}/boost-filesystem/copyright" ARCHIVE
                             "${downloads}/boost1.*_*.orig.tar.*" MEMBER "*/LICENSE_1_0.txt")
    set(runtime "")
    if(MINGW)
        string(REPLACE "_" "-" cpu "${CMAKE_SYSTEM_PROCESSOR}")
        orlindex_collect_license("${folder}" GCC-runtime FILES "/usr/share/doc/gcc-mingw-w64-${cpu}-posix-runtime/copyright"
                                 /usr/share/doc/gcc-mingw-w64-base/copyright)
        orlindex_collect_license("${folder}" mingw-w64-runtime FILES "/usr/share/doc/mingw-w64-${cpu}-dev/copyright")
        file(READ "${PROJECT_SOURCE_DIR}/cmake/package/licenses-mingw.md" runtime)
    endif()
    file(READ "${PROJECT_SOURCE_DIR}/cmake/package/licenses.md" list)
    file(WRITE "${folder}/README.md" "${list}${runtime}")
    set(ORLINDEX_MISSING_LICENSES "${ORLINDEX_MISSING_LICENSES}" PARENT_SCOPE)
endfunction()
