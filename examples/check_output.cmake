# Runs ${program}, which must succeed and print exactly what the file ${expected} holds.
execute_process(COMMAND "${program}" OUTPUT_VARIABLE printed RESULT_VARIABLE result)
file(READ "${expected}" wanted)
if(NOT result EQUAL 0 OR NOT printed STREQUAL wanted)
    message(FATAL_ERROR "${program} ended with ${result} and printed\n${printed}instead of\n${wanted}")
endif()
