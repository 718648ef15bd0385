# Runs `program`, with the words `arguments` and the file `input` where given, under `emulator` where it is for another
# machine, and compares what it prints with the file `expected`.
set(from)
if(DEFINED input)
  set(from INPUT_FILE ${input})
endif()
execute_process(COMMAND ${emulator} ${program} ${arguments} ${from} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
file(READ ${expected} wanted)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${program} ended with status ${status}")
endif()
if(NOT printed STREQUAL wanted)
  message(FATAL_ERROR "printed:\n${printed}\nexpected:\n${wanted}")
endif()
