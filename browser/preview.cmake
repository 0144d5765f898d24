# Preview rendering of single picture files: the routes by type, the metafile
# route, the imaging layer's route and the no-preview picture. Windows only.
if(WIN32)
  add_library(lumbrel_preview STATIC
    ${CMAKE_CURRENT_LIST_DIR}/PreviewRender.cpp
    ${CMAKE_CURRENT_LIST_DIR}/NoPreviewPicture.cpp
    ${CMAKE_CURRENT_LIST_DIR}/NoPreviewFace.cpp)
  target_include_directories(lumbrel_preview PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(lumbrel_preview
    PUBLIC lumbrel_imaging lumbrel_thumbnails lumbrel_foundation lumbrel_framework_win32 gdi32 user32
    PRIVATE lumbrel_warnings)
endif()
