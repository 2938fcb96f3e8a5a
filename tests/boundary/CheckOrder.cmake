# Compares the order in which the flat interface's header declares its functions with that of the reviewed list: it is part
# of the interface.
#
#     cmake -DHEADER=<talix.h> -DREVIEWED=<FlatInterface.c> -P CheckOrder.cmake

# names_in(<result> <file> <expression of what stands before a name>)
function(names_in result file before)
    file(READ "${file}" text)
    string(REGEX MATCHALL "${before}talix_[a-z_]+" names "${text}")
    list(TRANSFORM names REPLACE "^.*(talix_[a-z_]+)$" "\\1")
    set(${result} "${names}" PARENT_SCOPE)
endfunction()

names_in(declared "${HEADER}" "ORLINDEX_API [A-Za-z_]+ TALIX_CALL ")
names_in(reviewed "${REVIEWED}" "\nCHECK\\(")

list(LENGTH reviewed count)
if(NOT count EQUAL 32)
    message(SEND_ERROR "the flat interface has 32 functions, not ${count}")
endif()
if(NOT declared STREQUAL reviewed)
    message(SEND_ERROR "declared in another order:\n  ${declared}\nthan reviewed:\n  ${reviewed}")
endif()
