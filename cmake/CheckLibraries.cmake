# Fails when the dynamic linker would load for `program` a library whose name matches `forbidden`, or tells nothing.
execute_process(COMMAND ldd ${program} OUTPUT_VARIABLE libraries RESULT_VARIABLE status)
if(NOT status EQUAL 0 OR NOT libraries MATCHES "libicuuc")
  message(FATAL_ERROR "ldd tells nothing of ${program}: ${libraries}")
endif()
if(libraries MATCHES "[^\n]*lib[^ ]*(${forbidden})[^\n]*")
  message(FATAL_ERROR "${program} needs ${CMAKE_MATCH_0}")
endif()
