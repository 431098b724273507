# cmake -DCOMPILER=<c++> -DSOURCE=<file> "-DINCLUDES=<dir>|<dir>..." -P ExpectCompileErrors.cmake
# SOURCE must compile with -DKIT_CASE=0 and, for every line of it that selects a case n and says
# "expect: <text>", fail with -DKIT_CASE=n with a diagnostic that matches <text>.
string(REPLACE "|" ";" includes "${INCLUDES}")
list(TRANSFORM includes PREPEND "-I")

function(expect_compile case expect)
  execute_process(
    COMMAND ${COMPILER} -std=c++17 -fsyntax-only -DKIT_CASE=${case} ${includes} ${SOURCE}
    RESULT_VARIABLE rc OUTPUT_QUIET ERROR_VARIABLE err)
  if(expect STREQUAL "" AND NOT rc EQUAL 0)
    message(SEND_ERROR "case ${case} should compile:\n${err}")
  elseif(NOT expect STREQUAL "" AND (rc EQUAL 0 OR NOT err MATCHES "${expect}"))
    message(SEND_ERROR "case ${case} should fail with '${expect}', but gave (${rc}):\n${err}")
  endif()
endfunction()

expect_compile(0 "")
file(STRINGS ${SOURCE} cases REGEX "KIT_CASE [!=]= [0-9]+ +// expect: ")
list(LENGTH cases count)
if(count LESS 6)
  message(FATAL_ERROR "only ${count} cases found in ${SOURCE}")
endif()
foreach(line IN LISTS cases)
  string(REGEX MATCH "KIT_CASE [!=]= ([0-9]+) +// expect: (.*)$" matched "${line}")
  expect_compile(${CMAKE_MATCH_1} "${CMAKE_MATCH_2}")
endforeach()
