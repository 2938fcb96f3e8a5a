# read_exports(<module> <reader> <variable>): the names that a module exports, in the order of its table. The reader is
# llvm-readobj, whose output is the same on every release.

function(read_exports module reader variable)
    execute_process(COMMAND "${reader}" --coff-exports "${module}" OUTPUT_VARIABLE dump COMMAND_ERROR_IS_FATAL ANY)
    string(REGEX MATCHALL "\n *Name: [^\n]+" names "${dump}")
    list(TRANSFORM names REPLACE "^\n *Name: " "")
    set(${variable} "${names}" PARENT_SCOPE)
endfunction()
