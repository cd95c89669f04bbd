# cmake -DCORVANE=<program> -DOUT=<folder> -P GenerateCliDocs.cmake
file(MAKE_DIRECTORY ${OUT})
foreach(what manpage bash-completion)
  execute_process(COMMAND ${CMAKE_COMMAND} -E env ASAN_OPTIONS=detect_leaks=0 ${CORVANE} --${what}
                  OUTPUT_FILE ${OUT}/corvane.${what} RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "corvane --${what} failed: ${rc}")
  endif()
endforeach()
# Packages carry manual pages compressed, without a time stamp.
execute_process(COMMAND gzip -9nf ${OUT}/corvane.manpage RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "gzip failed: ${rc}")
endif()
file(RENAME ${OUT}/corvane.manpage.gz ${OUT}/corvane.1.gz)
