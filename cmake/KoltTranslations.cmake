# kolt_add_translation(<catalogue>.ts <name>.qm)
#
# Makes build/<preset>/bin/<name>.qm of the catalogue: beside the program, where it looks for its translations. Part of the
# default build; what reads the file when it runs depends on the target kolt_translations (kolt_test_languages does).
# New and changed texts get into a catalogue by scripts/translate.
find_package(Qt5 REQUIRED COMPONENTS Core LinguistTools)
add_custom_target(kolt_translations ALL)

function(kolt_add_translation catalogue qm)
  set(source "${CMAKE_CURRENT_SOURCE_DIR}/${catalogue}")
  set(result "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}/${qm}")
  add_custom_command(OUTPUT "${result}"
    COMMAND ${CMAKE_COMMAND} -E make_directory "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}"
    COMMAND Qt5::lrelease -silent "${source}" -qm "${result}"
    DEPENDS "${source}" VERBATIM)
  string(MAKE_C_IDENTIFIER "kolt_translation_${qm}" target)
  add_custom_target(${target} DEPENDS "${result}")
  add_dependencies(kolt_translations ${target})
  install(FILES "${result}" DESTINATION lib/kolt-capture)
endfunction()
