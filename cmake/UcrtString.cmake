# orlindex_ucrt_string: takes strcpy_s from the UCRT.
#
# A text that does not fit calls the invalid-parameter handler of the runtime that holds strcpy_s. Hosts run on the
# UCRT and install theirs there; mingw-w64's default runtime, msvcrt, never calls one. So in its builds this one
# function comes from the UCRT. Microsoft's compiler builds on the UCRT as a whole.

add_library(orlindex_ucrt_string INTERFACE)
if(MINGW)
    set(definition "${CMAKE_CURRENT_LIST_DIR}/ucrt/string.def")
    set(library "${PROJECT_BINARY_DIR}/ucrt/libucrt_string.a")
    file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/ucrt")
    add_custom_command(OUTPUT "${library}"
        COMMAND "${CMAKE_DLLTOOL}" --input-def "${definition}" --output-lib "${library}"
        DEPENDS "${definition}"
        COMMENT "Making the import library of the UCRT's strcpy_s"
        VERBATIM)
    add_custom_target(orlindex_ucrt_import DEPENDS "${library}")
    add_dependencies(orlindex_ucrt_string orlindex_ucrt_import)
    # Before the runtime's own libraries, which the compiler driver puts last: the first definition wins.
    target_link_libraries(orlindex_ucrt_string INTERFACE "${library}")
endif()
