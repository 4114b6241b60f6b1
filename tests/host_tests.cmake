# The headless host: its parts, its run loop against a fake plug-in and the real one, and the
# program as a user calls it.
find_package(nlohmann_json REQUIRED)

add_library(fake_plugin MODULE fake_plugin.cpp)
target_include_directories(fake_plugin PRIVATE ${PROJECT_SOURCE_DIR}/include)

add_executable(host_test
  host_export_test.cpp
  host_recordings_test.cpp
  host_session_test.cpp
  host_text_test.cpp
  host_view_test.cpp
  offset_tuned_source_test.cpp
  simulated_band_test.cpp)
if(PELAGRIM_SOAPY)
  target_sources(host_test PRIVATE host_receiver_test.cpp)
  target_link_libraries(host_test PRIVATE PkgConfig::SOAPY)
endif()
target_compile_definitions(host_test PRIVATE
  FAKE_PLUGIN_PATH="$<TARGET_FILE:fake_plugin>"
  PELAGRIM_PLUGIN_PATH="$<TARGET_FILE:pelagrim_plugin>")
target_link_libraries(host_test PRIVATE pelagrim_export pelagrim_host_lib nlohmann_json::nlohmann_json
  GTest::gtest_main)
add_dependencies(host_test fake_plugin pelagrim_plugin)
gtest_discover_tests(host_test DISCOVERY_TIMEOUT 60)

add_executable(host_report_test host_report_test.cpp)
target_link_libraries(host_report_test PRIVATE pelagrim_report GTest::gtest_main)
gtest_discover_tests(host_report_test DISCOVERY_TIMEOUT 60)

add_test(NAME pelagrim_survey_command_line
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/host_cli_test.sh $<TARGET_FILE:pelagrim-survey>)
