# What differs between the native (Linux) build and the Windows builds.
if(WIN32)
  # Every .exe and .dll runs without MinGW's DLLs beside it.
  add_link_options(-static -static-libgcc -static-libstdc++)
  add_compile_definitions(WIN32_LEAN_AND_MEAN NOMINMAX _WIN32_WINNT=0x0601 WINVER=0x0601)
  if(CMAKE_CROSSCOMPILING AND CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    set(LUMBREL_WINEPREFIX ${CMAKE_BINARY_DIR}/wineprefix)
    set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_SOURCE_DIR}/tools/wine-run --prefix ${LUMBREL_WINEPREFIX})
    set(LUMBREL_RUNS_TESTS ON)
  elseif(NOT CMAKE_CROSSCOMPILING)
    set(LUMBREL_RUNS_TESTS ON)
  else()
    set(LUMBREL_RUNS_TESTS OFF)
  endif()
else()
  set(LUMBREL_RUNS_TESTS ON)
endif()

if(LUMBREL_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()

if(WIN32)
  set(ZLIB_USE_STATIC_LIBS ON)
endif()
find_package(ZLIB REQUIRED)

# GoogleTest: Debian's package natively; for MinGW, built from the sources
# that the googletest package installs.
if(WIN32)
  set(gtest_force_shared_crt OFF CACHE BOOL "" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  set(BUILD_GMOCK ON CACHE BOOL "" FORCE)
  add_subdirectory(/usr/src/googletest ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
else()
  find_package(GTest REQUIRED)
endif()

# Adds a test executable; under Wine one process runs all of its cases,
# because starting a Wine process costs far more than a test case.
function(lumbrel_add_test name)
  cmake_parse_arguments(T "" "" "SOURCES;LIBS;LABELS" ${ARGN})
  add_executable(${name} ${T_SOURCES})
  target_link_libraries(${name} PRIVATE ${T_LIBS} GTest::gtest GTest::gtest_main lumbrel_warnings)
  if(LUMBREL_RUNS_TESTS)
    add_test(NAME ${name} COMMAND ${name} --gtest_brief=1)
    # A hung test fails instead of holding up the whole run.
    set_tests_properties(${name} PROPERTIES WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR}
      LABELS "${T_LABELS}" TIMEOUT 150)
  endif()
endfunction()
