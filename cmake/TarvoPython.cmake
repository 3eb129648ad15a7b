# Python for the module and the tests. Debian's interpreter by default: its
# packages (pytest, pandas, pybind11) are the ones setup.sh installs, while a
# python3 earlier on PATH (a pyenv shim, a venv) may lack them.
if(EXISTS /usr/bin/python3)
  set(tarvo_default_python /usr/bin/python3)
else()
  find_program(tarvo_default_python python3)
endif()
set(TARVO_PYTHON "${tarvo_default_python}" CACHE FILEPATH
    "Python interpreter for the tarvo module and the Python tests")

# pytest runs the Python tests; not under the sanitizers, whose runtime
# cannot be loaded into an interpreter that was started without it.
set(TARVO_PYTEST_COMMAND "")
if(TARVO_PYTHON AND NOT TARVO_SANITIZE)
  execute_process(COMMAND ${TARVO_PYTHON} -c "import pytest"
    RESULT_VARIABLE tarvo_no_pytest OUTPUT_QUIET ERROR_QUIET)
  if(tarvo_no_pytest EQUAL 0)
    set(TARVO_PYTEST_COMMAND ${TARVO_PYTHON} -m pytest)
  else()
    message(STATUS "pytest not found for ${TARVO_PYTHON}: no Python tests")
  endif()
endif()
