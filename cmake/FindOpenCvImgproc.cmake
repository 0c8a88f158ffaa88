# OpenCV's core and imgproc alone, as Debian's -dev packages of these two modules bring them (the package files of the whole
# of OpenCV come only with all of its modules). Target: OpenCvImgproc::OpenCvImgproc. For tests and benchmarks only.
find_path(OpenCvImgproc_INCLUDE_DIR opencv2/imgproc.hpp PATH_SUFFIXES opencv4)
find_library(OpenCvImgproc_LIBRARY opencv_imgproc)
find_library(OpenCvImgproc_CORE_LIBRARY opencv_core)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(OpenCvImgproc
  REQUIRED_VARS OpenCvImgproc_LIBRARY OpenCvImgproc_CORE_LIBRARY OpenCvImgproc_INCLUDE_DIR)
if(OpenCvImgproc_FOUND AND NOT TARGET OpenCvImgproc::OpenCvImgproc)
  add_library(OpenCvImgproc::OpenCvImgproc INTERFACE IMPORTED)
  target_include_directories(OpenCvImgproc::OpenCvImgproc SYSTEM INTERFACE "${OpenCvImgproc_INCLUDE_DIR}")
  target_link_libraries(OpenCvImgproc::OpenCvImgproc INTERFACE
    "${OpenCvImgproc_LIBRARY}" "${OpenCvImgproc_CORE_LIBRARY}")
endif()
mark_as_advanced(OpenCvImgproc_INCLUDE_DIR OpenCvImgproc_LIBRARY OpenCvImgproc_CORE_LIBRARY)
