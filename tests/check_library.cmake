# The shared library exports exactly the names in EXPECTED under the version NODE or a later one of the same series,
# carries SONAME, and needs the C runtime alone, and the library ALLOWED where one is given.
execute_process(COMMAND ${NM} -D --defined-only ${LIBRARY} OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND ${READELF} -d ${LIBRARY} OUTPUT_VARIABLE dynamic COMMAND_ERROR_IS_FATAL ANY)

string(REGEX MATCHALL "[^ \n]+\n" exported "${symbols}")
string(REPLACE "\n" "" exported "${exported}")
list(FILTER exported EXCLUDE REGEX "^${NODE}(@|\\.|$)")
string(REGEX REPLACE "@@${NODE}(\\.[0-9]+)?(;|$)" "\\2" exported "${exported}")
file(STRINGS ${EXPECTED} expected)
list(SORT exported)
list(SORT expected)
if(NOT exported STREQUAL expected)
  message(FATAL_ERROR "exported: ${exported}\nexpected: ${expected}")
endif()

if(NOT dynamic MATCHES "Library soname: \\[${SONAME}\\]")
  message(FATAL_ERROR "SONAME is not ${SONAME}:\n${dynamic}")
endif()

string(REGEX MATCHALL "Shared library: \\[[^]]+" needed "${dynamic}")
list(FILTER needed EXCLUDE REGEX "\\[lib(c|m|${ALLOWED})\\.")
if(needed)
  message(FATAL_ERROR "needs more than the C runtime: ${needed}")
endif()
