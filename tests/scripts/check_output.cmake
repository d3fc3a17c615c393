# Runs PROGRAM with ARGS (separated by |), requires exit status 0, and
# compares what it prints from the first occurrence of FROM to the end with
# the file EXPECTED, byte for byte.
string(REPLACE "|" ";" args "${ARGS}")
execute_process(COMMAND ${PROGRAM} ${args}
  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "exit status ${rc}\n${out}${err}")
endif()
string(FIND "${out}" "${FROM}" at)
if(at EQUAL -1)
  message(FATAL_ERROR "no \"${FROM}\" in:\n${out}${err}")
endif()
string(SUBSTRING "${out}" ${at} -1 printed)
file(READ "${EXPECTED}" expected)
if(NOT printed STREQUAL expected)
  message(FATAL_ERROR "printed:\n${printed}\nexpected (${EXPECTED}):\n${expected}")
endif()
