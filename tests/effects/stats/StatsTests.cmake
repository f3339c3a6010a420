# The statistics suite, plus one process per environment setting: the registry reads its
# environment once per process.
tarsel_add_test_suite(test_stats ${CMAKE_CURRENT_LIST_DIR} effects_stats)

add_executable(test_stats_environment ${CMAKE_CURRENT_LIST_DIR}/environment/EnvironmentTests.cpp)
target_link_libraries(test_stats_environment PRIVATE effects_stats GTest::gtest GTest::gtest_main)

set(_stats_dump_file ${CMAKE_CURRENT_BINARY_DIR}/stats_dump.bin)
function(tarsel_stats_environment_test case)
  add_test(NAME test_stats_environment.${case}
           COMMAND test_stats_environment --gtest_filter=StatsEnvironment.${case})
  set_tests_properties(test_stats_environment.${case} PROPERTIES TIMEOUT 30
    ENVIRONMENT_MODIFICATION "MGR_STATS_DUMP_TCPIP=unset:;MGR_STATS_DUMP_FILE=unset:;TARSEL_STATS_ENV_CASE=set:${case};${ARGN}")
endfunction()
tarsel_stats_environment_test(NothingStartsWithoutEitherVariable)
tarsel_stats_environment_test(FileVariableOpensTheDumpFile MGR_STATS_DUMP_FILE=set:${_stats_dump_file}.file)
tarsel_stats_environment_test(ServerVariableStartsTheServerOnThePortItNames
                              MGR_STATS_DUMP_FILE=set:${_stats_dump_file}.server)
