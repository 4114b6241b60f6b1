# The headless host: its parts, its run loop against a fake plug-in and the real one, and the
# program as a user calls it.
add_library(fake_plugin MODULE session/fake_plugin.cpp)
target_include_directories(fake_plugin PRIVATE ${PROJECT_SOURCE_DIR}/include)

add_executable(host_test
  commands/survey_setup_test.cpp
  export/export_test.cpp
  process/whole_file_test.cpp
  session/session_test.cpp
  simulation/simulated_band_test.cpp
  sources/offset_tuned_source_test.cpp
  sources/raw_recording_test.cpp
  sources/recording_name_test.cpp
  sources/replayed_source_test.cpp
  sources/sigmf_recording_test.cpp
  sources/wav_recording_test.cpp
  survey_dir/safe_copy_test.cpp
  survey_dir/saved_survey_test.cpp
  survey_dir/survey_dir_test.cpp
  text/text_test.cpp
  view/background_view_test.cpp
  view/view_test.cpp)
if(PELAGRIM_SOAPY)
  target_sources(host_test PRIVATE sources/receiver_test.cpp)
  target_link_libraries(host_test PRIVATE PkgConfig::SOAPY)
endif()
set_source_files_properties(sources/raw_recording_test.cpp PROPERTIES
  COMPILE_OPTIONS -U_FORTIFY_SOURCE)  # it has its own poll()
target_compile_definitions(host_test PRIVATE
  FAKE_PLUGIN_PATH="$<TARGET_FILE:fake_plugin>"
  PELAGRIM_PLUGIN_PATH="$<TARGET_FILE:pelagrim_plugin>")
target_link_libraries(host_test PRIVATE pelagrim_host_commands nlohmann_json::nlohmann_json
  GTest::gtest_main)
add_dependencies(host_test fake_plugin pelagrim_plugin)
gtest_discover_tests(host_test DISCOVERY_TIMEOUT 60)

# The program on a terminal.
add_executable(terminal_test view/terminal_test.cpp)
target_compile_definitions(terminal_test PRIVATE
  PELAGRIM_SURVEY_PATH="$<TARGET_FILE:pelagrim-survey>")
target_include_directories(terminal_test PRIVATE ${PROJECT_SOURCE_DIR})
target_link_libraries(terminal_test PRIVATE GTest::gtest_main util)
add_dependencies(terminal_test pelagrim-survey pelagrim_plugin)
gtest_discover_tests(terminal_test DISCOVERY_TIMEOUT 60)

add_executable(host_report_test report/report_test.cpp)
target_link_libraries(host_report_test PRIVATE pelagrim_host_report GTest::gtest_main)
gtest_discover_tests(host_report_test DISCOVERY_TIMEOUT 60)

add_test(NAME pelagrim_survey_command_line
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/commands/command_line_test.sh $<TARGET_FILE:pelagrim-survey>)
add_test(NAME pelagrim_survey_options_in_manual
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/commands/options_test.sh $<TARGET_FILE:pelagrim-survey>
    ${PROJECT_SOURCE_DIR}/packaging/pelagrim-survey.1)
add_test(NAME pelagrim_survey_completion
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/commands/completion_test.sh $<TARGET_FILE:pelagrim-survey>
    ${PROJECT_SOURCE_DIR}/packaging/pelagrim-survey.bash-completion)

# Kills at random moments, a full disk, flushes that fail.
add_library(failing_disk MODULE survey_dir/failing_disk.c)
target_link_libraries(failing_disk PRIVATE ${CMAKE_DL_LIBS})
if(NOT PELAGRIM_SANITIZE)
  add_test(NAME a_survey_outlives_kills
    COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/survey_dir/kill_test.sh $<TARGET_FILE:pelagrim-survey>
      $<TARGET_FILE:failing_disk>)
endif()
add_test(NAME whose_list_a_directory_holds
  COMMAND ${CMAKE_CURRENT_SOURCE_DIR}/commands/directory_test.sh $<TARGET_FILE:pelagrim-survey>)

add_executable(evidence_test evidence/evidence_test.cpp)
target_compile_definitions(evidence_test PRIVATE
  PELAGRIM_PLUGIN_PATH="$<TARGET_FILE:pelagrim_plugin>")
target_link_libraries(evidence_test PRIVATE
  pelagrim_files pelagrim_host_evidence pelagrim_host_simulation GTest::gtest_main)
add_dependencies(evidence_test pelagrim_plugin)
gtest_discover_tests(evidence_test DISCOVERY_TIMEOUT 60)

add_executable(history_test
  history/history_test.cpp
  history/occupancy_test.cpp
  history/replay_test.cpp)
target_compile_definitions(history_test PRIVATE
  PELAGRIM_PLUGIN_PATH="$<TARGET_FILE:pelagrim_plugin>")
target_link_libraries(history_test PRIVATE
  pelagrim_host_history pelagrim_host_simulation GTest::gtest_main ${CMAKE_DL_LIBS})
add_dependencies(history_test pelagrim_plugin)
gtest_discover_tests(history_test DISCOVERY_TIMEOUT 60)
