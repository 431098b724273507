# cmake -DCOMPILER=... -DSOURCE=... -DINCLUDES="a;b" -DCASE=n -DEXPECT=<regex> -P this file
# Compiles SOURCE with -DKIT_CASE=CASE. With EXPECT empty the compilation must succeed; otherwise
# it must fail with a diagnostic matching EXPECT.
set(args -std=c++17 -fsyntax-only -DKIT_CASE=${CASE})
foreach(dir IN LISTS INCLUDES)
  list(APPEND args -I${dir})
endforeach()
execute_process(COMMAND ${COMPILER} ${args} ${SOURCE}
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(EXPECT STREQUAL "")
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "case ${CASE} should compile:\n${err}")
  endif()
else()
  if(rc EQUAL 0)
    message(FATAL_ERROR "case ${CASE} compiled, but should fail with: ${EXPECT}")
  endif()
  if(NOT err MATCHES "${EXPECT}")
    message(FATAL_ERROR "case ${CASE} failed, but without '${EXPECT}':\n${err}")
  endif()
endif()
