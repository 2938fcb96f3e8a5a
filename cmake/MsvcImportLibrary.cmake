# orlindex_msvc_import_library(<target>): makes an import library for Microsoft's linker beside the one of mingw-w64. It only
# contains the flat functions, because the names of the classes are those of another compiler. Sets
# ORLINDEX_MSVC_IMPORT_LIBRARY.

find_program(ORLINDEX_LLVM_DLLTOOL llvm-dlltool DOC "Makes import libraries for Microsoft's linker")

function(orlindex_msvc_import_library target)
    if(NOT ORLINDEX_LLVM_DLLTOOL)
        message(STATUS "llvm-dlltool was not found: the build makes no import library for Microsoft's linker")
        return()
    endif()
    if(CMAKE_SIZEOF_VOID_P EQUAL 8)
        set(machine i386:x86-64)
    else()
        set(machine i386)
    endif()
    set(names "${CMAKE_CURRENT_BINARY_DIR}/${target}-exports.def")
    set(flat "${CMAKE_CURRENT_BINARY_DIR}/${target}-flat.def")
    set(library "${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/Orlindex.lib")
    target_link_options(${target} PRIVATE "-Wl,--output-def,${names}")
    set_property(TARGET ${target} APPEND PROPERTY ADDITIONAL_CLEAN_FILES "${names}")

    set(program "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/package/FlatDefinition.cmake")
    add_custom_command(
        OUTPUT "${library}"
        COMMAND "${CMAKE_COMMAND}" "-DEXPORTS=${names}" "-DMODULE=$<TARGET_FILE_NAME:${target}>" "-DOUTPUT=${flat}" -P
                "${program}"
        COMMAND "${ORLINDEX_LLVM_DLLTOOL}" -m ${machine} -d "${flat}" -l "${library}"
        DEPENDS ${target} "${program}"
        COMMENT "Making the import library for Microsoft's linker"
        VERBATIM)
    add_custom_target(${target}_msvc_import ALL DEPENDS "${library}")
    set(ORLINDEX_MSVC_IMPORT_LIBRARY "${library}" PARENT_SCOPE)
endfunction()
