# cmake -DNM= -DLIBRARY= -DREVIEWED= -P CheckImportLibrary.cmake: the import library for Microsoft's linker gives every
# flat function of the reviewed list, and nothing else.

execute_process(COMMAND "${NM}" "${LIBRARY}" OUTPUT_VARIABLE symbols ERROR_VARIABLE ignored COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "__imp__?[A-Za-z_?@0-9]+" found "${symbols}")
list(TRANSFORM found REPLACE "^__imp_" "")
list(SORT found)
file(STRINGS "${REVIEWED}" reviewed REGEX "^talix_")
if(NOT found STREQUAL reviewed)
    message(FATAL_ERROR "in the import library: ${found}\nreviewed: ${reviewed}")
endif()
