# Runs `program` and compares what it prints with the file `expected`.
execute_process(COMMAND ${program} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
file(READ ${expected} wanted)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${program} ended with status ${status}")
endif()
if(NOT printed STREQUAL wanted)
  message(FATAL_ERROR "printed:\n${printed}\nexpected:\n${wanted}")
endif()
