# What the plug-in promises under faults, load and time: docs/reliability.md names these tests.

# Faults in the C library: the executable exports functions that the plug-in then finds first.
add_executable(fault_test
  reliability/fault_allocation_test.cpp
  reliability/fault_files_test.cpp
  reliability/fault_injection.cpp)
set_target_properties(fault_test PROPERTIES ENABLE_EXPORTS ON)
set_source_files_properties(reliability/fault_injection.cpp PROPERTIES
  COMPILE_OPTIONS "-fvisibility=default;-U_FORTIFY_SOURCE")

add_executable(reliability_test
  reliability/load_test.cpp
  reliability/numbers_test.cpp
  reliability/soak_test.cpp
  reliability/threads_test.cpp)

foreach(target fault_test reliability_test)
  target_compile_definitions(${target} PRIVATE
    PELAGRIM_PLUGIN_PATH="$<TARGET_FILE:pelagrim_plugin>")
  if(PELAGRIM_SANITIZE)
    target_compile_definitions(${target} PRIVATE PELAGRIM_SANITIZED)
  endif()
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/include)
  target_link_libraries(${target} PRIVATE GTest::gtest_main ${CMAKE_DL_LIBS})
  add_dependencies(${target} pelagrim_plugin)
  gtest_discover_tests(${target} DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT 300)  # a hang fails, too
endforeach()

# The model's and the plug-in's tests again, in a locale made for them that writes 0,5 for a half.
set(locale_dir ${CMAKE_CURRENT_BINARY_DIR}/locale)
add_custom_command(OUTPUT ${locale_dir}/de_DE.UTF-8/LC_NUMERIC
  COMMAND ${CMAKE_COMMAND} -E make_directory ${locale_dir}
  COMMAND localedef --no-archive -f UTF-8 -i de_DE ${locale_dir}/de_DE.UTF-8)
add_custom_target(comma_locale ALL DEPENDS ${locale_dir}/de_DE.UTF-8/LC_NUMERIC)
# The C library never frees its copy of LOCPATH, so leaks are not checked here.
foreach(suite model_test plugin_test)
  target_sources(${suite} PRIVATE support/locale_environment.cpp)
  add_test(NAME ${suite}_in_comma_locale COMMAND ${suite})
  set_property(TEST ${suite}_in_comma_locale PROPERTY ENVIRONMENT
    LOCPATH=${locale_dir} PELAGRIM_TEST_LOCALE=de_DE.UTF-8 ASAN_OPTIONS=detect_leaks=0)
endforeach()
