# Resource strings, the shared drawing objects, drawing routines, colour
# arithmetic and the last-resort error handling. The colour arithmetic, the
# palette's colours and the tokenizer are portable; the rest needs Windows.
add_library(lumbrel_stdobj STATIC
  ${CMAKE_CURRENT_LIST_DIR}/ColorMath.cpp
  ${CMAKE_CURRENT_LIST_DIR}/PaletteColors.cpp
  ${CMAKE_CURRENT_LIST_DIR}/TextInserts.cpp
  ${CMAKE_CURRENT_LIST_DIR}/Tokenizer.cpp)
if(WIN32)
  target_sources(lumbrel_stdobj PRIVATE
    ${CMAKE_CURRENT_LIST_DIR}/resstr.cpp
    ${CMAKE_CURRENT_LIST_DIR}/AssertException.cpp
    ${CMAKE_CURRENT_LIST_DIR}/BracketNames.cpp
    ${CMAKE_CURRENT_LIST_DIR}/Stdobj.cpp
    ${CMAKE_CURRENT_LIST_DIR}/SharedPalette.cpp
    ${CMAKE_CURRENT_LIST_DIR}/DrawingRoutines.cpp
    ${CMAKE_CURRENT_LIST_DIR}/FatalError.cpp)
  target_link_libraries(lumbrel_stdobj PUBLIC lumbrel_foundation lumbrel_framework_win32 lumbrel_imaging
    gdi32 user32)
endif()
target_include_directories(lumbrel_stdobj PUBLIC ${PROJECT_SOURCE_DIR})
target_link_libraries(lumbrel_stdobj PRIVATE lumbrel_warnings)
