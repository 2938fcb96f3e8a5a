# The content of an installation, for `cmake --install` and for the archive that `cpack` writes: a kit for host developers that
# works in any folder.
#
#     bin/          Orlindex.dll, and the diagnostic tool
#     lib/          import libraries, cmake/Orlindex and pkgconfig
#     include/      headers
#     plugin/       the headers of the plugin contract, with the same relative paths as in src/
#     agent/        the sign-in agent's files in one folder, as a server installation, and a host's configuration. If the library
#                   trusts another root or other signers than the build tree's own, the module is in agent/unsigned instead, for
#                   the maker to sign
#     examples/     sources, which find the library by find_package(Orlindex)
#     docs/         guides, schemas and the reference
#     licenses/     licence texts of what is linked in
#     LICENSE       licence of Orlindex
#     README.md     what is where

include(CMakePackageConfigHelpers)
include(Licenses)

# --- Library --------------------------------------------------------------------------------------------------------

install(TARGETS orlindex RUNTIME DESTINATION bin ARCHIVE DESTINATION lib)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/orlindex" DESTINATION include FILES_MATCHING PATTERN "*.h")
install(DIRECTORY "${PROJECT_SOURCE_DIR}/src/load/contract" DESTINATION plugin/load FILES_MATCHING PATTERN "*.h")
install(FILES "${PROJECT_SOURCE_DIR}/src/base/LogLevel.h" DESTINATION plugin/base)
if(TARGET orlindex_msvc_import)
    install(FILES "${ORLINDEX_MSVC_IMPORT_LIBRARY}" DESTINATION lib)
endif()

# The compiler whose classes the library contains, as the name of the variable that CMake sets for it.
set(ORLINDEX_CLASSES_OF MINGW)
if(MSVC)
    set(ORLINDEX_CLASSES_OF MSVC)
endif()
set(ORLINDEX_IMPORT_LIBRARY "${CMAKE_IMPORT_LIBRARY_PREFIX}Orlindex${CMAKE_IMPORT_LIBRARY_SUFFIX}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/package/OrlindexConfig.cmake.in"
                              "${PROJECT_BINARY_DIR}/package/OrlindexConfig.cmake" INSTALL_DESTINATION lib/cmake/Orlindex)
# A host needs the version that it was written for or a later one: within a major version, nothing is removed.
write_basic_package_version_file("${PROJECT_BINARY_DIR}/package/OrlindexConfigVersion.cmake" VERSION "${PROJECT_VERSION}"
                                 COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/package/OrlindexConfig.cmake" "${PROJECT_BINARY_DIR}/package/OrlindexConfigVersion.cmake"
        DESTINATION lib/cmake/Orlindex)
if(MINGW)
    # The file name is needed: with -lOrlindex, a static link ignores import libraries and would use Orlindex.lib.
    set(ORLINDEX_LINK_LIBRARY "-l:${ORLINDEX_IMPORT_LIBRARY}")
else()
    set(ORLINDEX_LINK_LIBRARY -lOrlindex)
endif()
configure_file("${PROJECT_SOURCE_DIR}/cmake/package/Orlindex.pc.in" "${PROJECT_BINARY_DIR}/package/Orlindex.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/package/Orlindex.pc" DESTINATION lib/pkgconfig)

# --- Programs -------------------------------------------------------------------------------------------------------

if(TARGET orlindex_doctor)
    install(TARGETS orlindex_doctor RUNTIME DESTINATION bin)
endif()
if(ORLINDEX_BUILD_AGENT)
    install(TARGETS agent_server RUNTIME DESTINATION agent)
    install(FILES "${PROJECT_BINARY_DIR}/agent/TALIXVersionCompatibility.config" DESTINATION agent)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/agent/installation/host/" DESTINATION agent/host)
    install(FILES "${PROJECT_SOURCE_DIR}/agent/installation/README.md" DESTINATION agent)
    if(ORLINDEX_OWN_TRUST)
        # The signed module, not the unsigned file of the target.
        install(FILES "${PROJECT_BINARY_DIR}/agent/PellwickClient.dll" DESTINATION agent)
        install(DIRECTORY "${PROJECT_SOURCE_DIR}/agent/scenarios" DESTINATION agent)
    else()
        message(STATUS "The kit contains the sign-in agent's module unsigned, because this build trusts another root or other "
                       "signers than the build tree's own")
        install(FILES "$<TARGET_FILE:agent_plugin>" DESTINATION agent/unsigned)
    endif()
endif()

# --- Texts ----------------------------------------------------------------------------------------------------------

install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" DESTINATION . PATTERN ".*" EXCLUDE)
install(DIRECTORY "${PROJECT_SOURCE_DIR}/docs" DESTINATION . PATTERN ".*" EXCLUDE PATTERN Doxyfile EXCLUDE)
install(FILES "${PROJECT_SOURCE_DIR}/cmake/package/README.md" "${PROJECT_SOURCE_DIR}/LICENSE" DESTINATION .)
orlindex_collect_licenses("${PROJECT_BINARY_DIR}/package/licenses")
if(ORLINDEX_MISSING_LICENSES)
    # Nobody must ship an archive without them: the installation fails, the build does not.
    list(JOIN ORLINDEX_MISSING_LICENSES ", " missing)
    install(CODE "message(FATAL_ERROR \"The licence texts of ${missing} were not found (cmake/Licenses.cmake says where it \
looks). Run scripts/setup.sh, then configure again.\")")
endif()
install(DIRECTORY "${PROJECT_BINARY_DIR}/package/licenses" DESTINATION .)
# The last step, because it looks at the installed files.
install(CODE "set(SOURCE [[${PROJECT_SOURCE_DIR}]])")
install(SCRIPT "${PROJECT_SOURCE_DIR}/cmake/package/InstallPages.cmake")

# --- Archive --------------------------------------------------------------------------------------------------------

if(CMAKE_SIZEOF_VOID_P EQUAL 8)
    set(platform win64)
else()
    set(platform win32)
endif()
set(CPACK_GENERATOR ZIP)
set(CPACK_PACKAGE_NAME Orlindex)
set(CPACK_PACKAGE_VENDOR "Kestrany, Inc.")
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_FILE_NAME "Orlindex-${PROJECT_VERSION}-${platform}")
set(CPACK_VERBATIM_VARIABLES ON)
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/package/NormalizeArchive.cmake")
include(CPack)
