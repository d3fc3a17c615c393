# Installs BUILD into a new prefix under WORK and runs the installed zemlo-host
# from a folder outside both trees: it must name a plug-in bundle inside the
# prefix, and `apply` on an installed sample must write exactly what the build
# tree's own program (PROGRAM) writes.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/elsewhere)
set(prefix ${WORK}/prefix)
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix}
  OUTPUT_QUIET ERROR_VARIABLE err RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "install failed (${rc}): ${err}")
endif()
set(installed ${prefix}/bin/zemlo-host)

execute_process(COMMAND ${installed} --version WORKING_DIRECTORY ${WORK}/elsewhere
  OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
if(NOT rc EQUAL 0 OR NOT out MATCHES "^zemlo-host [0-9]+\\.[0-9]+\\.[0-9]+\n")
  message(FATAL_ERROR "--version: status ${rc}: ${out}${err}")
endif()
if(NOT out MATCHES "plug-in bundle: ${prefix}/lib/capochords/CapoChords.bundle\n")
  message(FATAL_ERROR "the installed program does not use its own bundle: ${out}")
endif()

set(sample ${prefix}/share/capochords/samples/harbour-lights.musicxml)
foreach(program installed build)
  if(program STREQUAL installed)
    set(exe ${installed})
  else()
    set(exe ${PROGRAM})
  endif()
  execute_process(COMMAND ${exe} apply ${sample} --capo 3 -o ${WORK}/${program}.musicxml
    WORKING_DIRECTORY ${WORK}/elsewhere
    OUTPUT_VARIABLE out ERROR_VARIABLE err RESULT_VARIABLE rc)
  if(NOT rc EQUAL 0)
    message(FATAL_ERROR "${program} apply: status ${rc}: ${out}${err}")
  endif()
endforeach()
file(READ ${WORK}/installed.musicxml a)
file(READ ${WORK}/build.musicxml b)
if(NOT a STREQUAL b OR NOT a MATCHES "type=\"alternate\"")
  message(FATAL_ERROR "the installed program wrote other output than the build tree's")
endif()
file(REMOVE_RECURSE ${WORK})
