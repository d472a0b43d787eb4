# The headers include turbojpeg.h.
find_path(velmar_video_TURBOJPEG_INCLUDE_DIR turbojpeg.h)
mark_as_advanced(velmar_video_TURBOJPEG_INCLUDE_DIR)
if(NOT velmar_video_TURBOJPEG_INCLUDE_DIR)
  set(${CMAKE_FIND_PACKAGE_NAME}_FOUND FALSE)
  set(${CMAKE_FIND_PACKAGE_NAME}_NOT_FOUND_MESSAGE
    "turbojpeg.h is missing (Debian: libturbojpeg0-dev)")
  return()
endif()
include(${CMAKE_CURRENT_LIST_DIR}/velmar_video_targets.cmake)
target_include_directories(velmar_video::velmar_video
  INTERFACE ${velmar_video_TURBOJPEG_INCLUDE_DIR})
