# The Debian package: `cpack` in a build folder, or scripts/package.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME kolt-capture)
set(CPACK_PACKAGE_VENDOR "The KOLT CAPTURE authors")
set(CPACK_PACKAGE_CONTACT "The KOLT CAPTURE authors <kolt-capture@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "client for GigE Vision and USB3 Vision cameras")
set(CPACK_STRIP_FILES TRUE)
set(CPACK_PRE_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/KoltPackageModes.cmake")

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION video)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"Finds the industrial cameras of any maker in the network and on the bus,
shows their live picture, sets their features, and saves pictures, series
and video.
.
With it come kolt_live, which shows and measures a live picture through the
platform libraries alone, and kolt_virtual_camera, a GigE Vision camera in
software.")
# Of the libraries that are linked; those of the own package are found through $ORIGIN. Besides: the face of the program, and
# the programs that it asks whether a camera answers and which tools run.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-inter, iputils-ping, procps")
# Loaded when they are there: drawing by OpenGL, Chinese letters, the desktop's program for a manual.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-noto-cjk, libegl1, libgl1-mesa-dri, libgles2, xdg-utils")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA
    "${PROJECT_SOURCE_DIR}/packaging/debian/postinst" "${PROJECT_SOURCE_DIR}/packaging/debian/postrm")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION TRUE)
include(CPack)
