# Every folder lists its sources by glob so that adding a unit needs no build edit.
function(tarsel_glob_sources out dir)
  file(GLOB _files CONFIGURE_DEPENDS "${dir}/*.cpp")
  set(${out} ${_files} PARENT_SCOPE)
endfunction()

# One GoogleTest executable per test folder, registered with CTest.
function(tarsel_add_test_suite name dir)
  tarsel_glob_sources(_sources ${dir})
  if(NOT _sources)
    return()
  endif()
  add_executable(${name} ${_sources})
  target_link_libraries(${name} PRIVATE ${ARGN} GTest::gtest GTest::gtest_main GTest::gmock)
  target_include_directories(${name} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_definitions(${name} PRIVATE TARSEL_TEST_DATA_DIR="${PROJECT_SOURCE_DIR}/tests/data"
                                             TARSEL_SHADERS_DIR="${PROJECT_SOURCE_DIR}/shaders")
  gtest_discover_tests(${name} TEST_PREFIX "${name}." DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)
endfunction()

# One benchmark executable per source file in bench/.
function(tarsel_add_benchmark source)
  get_filename_component(_name ${source} NAME_WE)
  add_executable(${_name} ${source})
  target_link_libraries(${_name} PRIVATE ${ARGN} benchmark::benchmark)
  target_compile_definitions(${_name} PRIVATE TARSEL_SHADERS_DIR="${PROJECT_SOURCE_DIR}/shaders")
endfunction()
