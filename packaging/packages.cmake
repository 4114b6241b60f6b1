# What is installed where, and the Debian packages: the plug-in for a receiver; the headless host;
# the boundary header for host authors. scripts/package builds them.
install(TARGETS pelagrim_plugin LIBRARY DESTINATION lib/pelagrim COMPONENT plugin)
install(FILES include/wendle_plugin.h DESTINATION include COMPONENT dev)
install(FILES examples/minimal_host.c DESTINATION share/doc/pelagrim-dev/examples COMPONENT dev)
set(CPACK_COMPONENTS_ALL plugin dev)

if(PELAGRIM_HOST)
  list(APPEND CPACK_COMPONENTS_ALL survey)
  install(TARGETS pelagrim-survey RUNTIME DESTINATION bin COMPONENT survey)
  install(FILES docs/exporting.md docs/file-formats.md docs/receivers.md docs/recordings.md
      docs/surveying-well.md
    DESTINATION share/doc/pelagrim-survey COMPONENT survey)
  install(FILES packaging/pelagrim-survey.service
    DESTINATION share/doc/pelagrim-survey/examples COMPONENT survey)
  install(FILES packaging/pelagrim-survey.bash-completion
    DESTINATION share/bash-completion/completions RENAME pelagrim-survey COMPONENT survey)
endif()

# Manual page and changelogs are installed compressed, as Debian wants, if there is gzip.
find_program(GZIP gzip)
function(install_compressed file directory name component)
  if(NOT GZIP)
    install(FILES ${file} DESTINATION ${directory} RENAME ${name} COMPONENT ${component})
    return()
  endif()
  set(compressed ${CMAKE_CURRENT_BINARY_DIR}/packaging/${component}/${name}.gz)
  add_custom_command(OUTPUT ${compressed}
    COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_CURRENT_BINARY_DIR}/packaging/${component}
    COMMAND ${GZIP} -9nc ${file} > ${compressed}
    DEPENDS ${file})
  add_custom_target(compressed_${component}_${name} ALL DEPENDS ${compressed})
  install(FILES ${compressed} DESTINATION ${directory} COMPONENT ${component})
endfunction()

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
configure_file(packaging/changelog.Debian.in packaging/changelog.Debian @ONLY)
set(package_of_plugin pelagrim-plugin)
set(package_of_dev pelagrim-dev)
set(package_of_survey pelagrim-survey)
foreach(component IN LISTS CPACK_COMPONENTS_ALL)
  set(package ${package_of_${component}})
  set(doc share/doc/${package})
  install(FILES LICENSE DESTINATION ${doc} RENAME copyright COMPONENT ${component})
  install_compressed(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${doc} changelog ${component})
  install_compressed(${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog.Debian ${doc}
    changelog.Debian ${component})
  install(FILES packaging/lintian-overrides/${package}
    DESTINATION share/lintian/overrides COMPONENT ${component})
endforeach()
if(PELAGRIM_HOST)
  install_compressed(${PROJECT_SOURCE_DIR}/packaging/pelagrim-survey.1 share/man/man1
    pelagrim-survey.1 survey)
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "Orvane project <pelagrim@orvane.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION hamradio)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME ${package_of_plugin})
set(CPACK_COMPONENT_PLUGIN_DESCRIPTION "spectrum survey plug-in for the Orvane receiver
Moves the receiver across a band, finds the signals in it and keeps a list
of what was heard where, how strong and how often.")
set(CPACK_DEBIAN_DEV_PACKAGE_NAME ${package_of_dev})
set(CPACK_DEBIAN_DEV_PACKAGE_ARCHITECTURE all)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEV_DESCRIPTION "header for programs that load the Pelagrim plug-in
Every record that crosses between host and plug-in, explained, and a small
host in C as an example.")
set(CPACK_DEBIAN_SURVEY_PACKAGE_NAME ${package_of_survey})
set(CPACK_DEBIAN_SURVEY_PACKAGE_DEPENDS
  "pelagrim-plugin (= ${PROJECT_VERSION}-${CPACK_DEBIAN_PACKAGE_RELEASE})")
set(CPACK_DEBIAN_SURVEY_PACKAGE_SUGGESTS soapysdr-module-all)
set(CPACK_COMPONENT_SURVEY_DESCRIPTION "survey a band from a terminal, a recording or a small box
Runs the Pelagrim plug-in without the receiver's window: on recordings, on
live receivers or on a simulated band, with a live view or JSON lines.")
include(CPack)
