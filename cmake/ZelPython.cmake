# Finds ZEL_PYTHON, Debian's own Python, which sees Debian's packages, before any other; and sets ZEL_PYTHON_TESTS if it
# has what the tests of the Python package need.
find_program(ZEL_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(ZEL_PYTHON python3)
if(ZEL_PYTHON)
  execute_process(COMMAND ${ZEL_PYTHON} -c "import numpy, pytest" RESULT_VARIABLE missing OUTPUT_QUIET ERROR_QUIET)
  if(missing EQUAL 0)
    set(ZEL_PYTHON_TESTS ON)
  endif()
endif()
