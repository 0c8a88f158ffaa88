# kolt_public_folder(<target> <folder>)
#
# Makes src/<folder>, and only that, includable as "<folder>/..." for the target and whoever links it. Every layer has an include root
# of its own, so an include that runs upward, to a layer that the target doesn't link, does not compile.
function(kolt_public_folder target folder)
  get_target_property(type ${target} TYPE)
  set(scope PUBLIC)
  if(type STREQUAL "INTERFACE_LIBRARY")
    set(scope INTERFACE)
  endif()
  set(root "${CMAKE_BINARY_DIR}/include/${target}")
  get_filename_component(parent "${root}/${folder}" DIRECTORY)
  file(MAKE_DIRECTORY "${parent}")
  file(CREATE_LINK "${PROJECT_SOURCE_DIR}/src/${folder}" "${root}/${folder}" SYMBOLIC)
  target_include_directories(${target} ${scope} "${root}")
endfunction()
