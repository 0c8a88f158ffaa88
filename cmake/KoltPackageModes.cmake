# Run by cpack before it packs what is installed: folders that everybody may enter, whatever the umask of who packs.
file(GLOB_RECURSE entries LIST_DIRECTORIES TRUE "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*")
foreach(entry ${entries})
  if(IS_DIRECTORY "${entry}" AND NOT IS_SYMLINK "${entry}")
    file(CHMOD "${entry}" PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
  endif()
endforeach()
