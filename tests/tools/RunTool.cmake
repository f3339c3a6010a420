# Runs one tarsel-fx command line and checks its exit code and output, which CTest alone cannot do
# together (a pass expression makes it ignore the exit code).
#   TOOL, ARGS ('|'-list), WORKDIR, EXPECT_EXIT, optional EXPECT_REGEX ('|'-list, each must match),
#   optional REJECT_REGEX, optional EXPECT_FILE (stdout must equal it byte for byte).
string(REPLACE "|" ";" ARGS "${ARGS}")
string(REPLACE "|" ";" EXPECT_REGEX "${EXPECT_REGEX}")
file(MAKE_DIRECTORY ${WORKDIR})
execute_process(COMMAND ${TOOL} ${ARGS} WORKING_DIRECTORY ${WORKDIR} RESULT_VARIABLE code OUTPUT_VARIABLE out
                ERROR_VARIABLE err)
set(all "${out}${err}")
if(NOT "${code}" STREQUAL "${EXPECT_EXIT}")
  message(FATAL_ERROR "exit code ${code}, expected ${EXPECT_EXIT}\n--- output\n${all}")
endif()
foreach(regex IN LISTS EXPECT_REGEX)
  if(NOT all MATCHES "${regex}")
    message(FATAL_ERROR "output does not match '${regex}'\n--- output\n${all}")
  endif()
endforeach()
if(DEFINED REJECT_REGEX AND all MATCHES "${REJECT_REGEX}")
  message(FATAL_ERROR "output matches '${REJECT_REGEX}'\n--- output\n${all}")
endif()
if(DEFINED EXPECT_FILE)
  file(READ ${EXPECT_FILE} expected)
  if(NOT out STREQUAL expected)
    message(FATAL_ERROR "stdout differs from ${EXPECT_FILE}\n--- stdout\n${out}--- expected\n${expected}")
  endif()
endif()
