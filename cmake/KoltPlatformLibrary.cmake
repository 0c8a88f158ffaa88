# kolt_add_platform_library(<target> CORE <core> OUTPUT <name> EXPORTS <map> [SOURCES <src>...] [LIBS <lib>...])
#
# One platform library as a shared object with an export list. Its inside is the static library <core>, which the
# tests link too, so that a test says on purpose whether it enters from outside (the exported calls) or from inside.
function(kolt_add_platform_library target)
  cmake_parse_arguments(ARG "" "CORE;OUTPUT;EXPORTS" "SOURCES;LIBS" ${ARGN})
  add_library(${target} SHARED ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE kolt_options ${ARG_CORE} ${ARG_LIBS})
  set(map "${CMAKE_CURRENT_SOURCE_DIR}/${ARG_EXPORTS}")
  target_link_options(${target} PRIVATE "-Wl,--version-script=${map}" -Wl,-z,defs)
  if(KOLT_SANITIZE OR KOLT_BUILD_FUZZERS)
    # The sanitizer's run-time is only in the program.
    target_link_options(${target} PRIVATE -Wl,-z,undefs)
  endif()
  set_target_properties(${target} PROPERTIES OUTPUT_NAME "${ARG_OUTPUT}" LINK_DEPENDS "${map}")
  install(TARGETS ${target} LIBRARY DESTINATION lib/kolt-capture)
endfunction()
