# orlindex_ucrt_string: takes strcpy_s from the UCRT.
#
# If a text does not fit, strcpy_s calls the invalid-parameter handler of its own runtime. Hosts use the UCRT and install their
# handler there. The default runtime of mingw-w64, msvcrt, never calls a handler. In builds with mingw-w64, this one function
# therefore comes from the UCRT. Builds with Microsoft's compiler use the UCRT for everything.

add_library(orlindex_ucrt_string INTERFACE)
if(MINGW)
    set(definition "${CMAKE_CURRENT_LIST_DIR}/ucrt/string.def")
    set(library "${PROJECT_BINARY_DIR}/ucrt/libucrt_string.a")
    file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/ucrt")
    add_custom_command(OUTPUT "${library}" COMMAND "${CMAKE_DLLTOOL}" --input-def "${definition}" --output-lib "${library}"
                       DEPENDS "${definition}" COMMENT "Making the import library of the UCRT's strcpy_s" VERBATIM)
    add_custom_target(orlindex_ucrt_import DEPENDS "${library}")
    add_dependencies(orlindex_ucrt_string orlindex_ucrt_import)
    # The compiler driver puts the runtime's libraries last, so this one comes before them, and the first definition wins.
    target_link_libraries(orlindex_ucrt_string INTERFACE "${library}")
endif()
