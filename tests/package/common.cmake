include(${SETTINGS})

# Runs a command and stops the test when it fails; `output` receives what it printed.
macro(run)
  execute_process(COMMAND ${ARGN} RESULT_VARIABLE code OUTPUT_VARIABLE output ERROR_VARIABLE errors)
  if(NOT code EQUAL 0)
    message(FATAL_ERROR "${ARGN}\nended with ${code}\n${output}${errors}")
  endif()
endmacro()

separate_arguments(c_flags UNIX_COMMAND "${C_FLAGS}")
separate_arguments(cxx_flags UNIX_COMMAND "${CXX_FLAGS}")
