# Fails when the dynamic linker would load for `program` a library whose name matches `forbidden`, or tells nothing. The
# linker is asked as ldd asks it, but under `emulator` where the program is for another machine.
execute_process(COMMAND ${CMAKE_COMMAND} -E env LD_TRACE_LOADED_OBJECTS=1 ${emulator} ${program}
                OUTPUT_VARIABLE libraries RESULT_VARIABLE status)
if(NOT status EQUAL 0 OR NOT libraries MATCHES "libicuuc")
  message(FATAL_ERROR "the linker tells nothing of ${program}: ${libraries}")
endif()
if(libraries MATCHES "[^\n]*lib[^ ]*(${forbidden})[^\n]*")
  message(FATAL_ERROR "${program} needs ${CMAKE_MATCH_0}")
endif()
