# The thumbnail store: thumbnail items and their .thm files, the thumbnail
# library, and the bitmap and metafile helpers of the preview renderer.
#
# Portable, built and tested everywhere (also under the sanitizers and the
# fuzzers):
#   lumbrel_thumbnails_portable  the .thm byte layout, the fit into the
#                                thumbnail box, the metafile structure check,
#                                its repair of what writers get wrong, the
#                                centring arithmetic, the category walk
#                                and the file error causes
# Windows only:
#   lumbrel_thumbnails           CThumbnailItem, CThumbnailLibrary and the GDI
#                                helpers
add_library(lumbrel_thumbnails_portable STATIC
  ${CMAKE_CURRENT_LIST_DIR}/ThmFile.cpp
  ${CMAKE_CURRENT_LIST_DIR}/ThumbnailFit.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MetafileCheck.cpp
  ${CMAKE_CURRENT_LIST_DIR}/MetafileRepair.cpp
  ${CMAKE_CURRENT_LIST_DIR}/BitmapCentering.cpp
  ${CMAKE_CURRENT_LIST_DIR}/CategoryScan.cpp
  ${CMAKE_CURRENT_LIST_DIR}/FileError.cpp)
target_include_directories(lumbrel_thumbnails_portable PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(lumbrel_thumbnails_portable PRIVATE lumbrel_warnings)

if(WIN32)
  add_library(lumbrel_thumbnails STATIC
    ${CMAKE_CURRENT_LIST_DIR}/ThumbnailItem.cpp
    ${CMAKE_CURRENT_LIST_DIR}/KeyedObject.cpp
    ${CMAKE_CURRENT_LIST_DIR}/ThumbnailLibrary.cpp
    ${CMAKE_CURRENT_LIST_DIR}/BitmapHelpers.cpp)
  target_include_directories(lumbrel_thumbnails PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(lumbrel_thumbnails
    PUBLIC lumbrel_thumbnails_portable lumbrel_imaging lumbrel_foundation lumbrel_stdobj gdi32 kernel32
    PRIVATE lumbrel_warnings)
endif()
