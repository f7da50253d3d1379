# Runs ${program}, by ${emulator} where there is one. It must succeed and print exactly what the file ${expected} holds, in the lines of its
# system.
execute_process(COMMAND ${emulator} "${program}" OUTPUT_VARIABLE printed RESULT_VARIABLE result)
string(REPLACE "\r\n" "\n" printed "${printed}")
file(READ "${expected}" wanted)
if(NOT result EQUAL 0 OR NOT printed STREQUAL wanted)
    message(FATAL_ERROR "${program} ended with ${result} and printed\n${printed}instead of\n${wanted}")
endif()
