# What is installed where, and the Debian packages: the plug-in alone, for a receiver, and the
# headless host with the libraries it needs. scripts/package builds both.
install(TARGETS pelagrim_plugin LIBRARY DESTINATION lib/pelagrim COMPONENT plugin)
install(FILES LICENSE DESTINATION share/doc/pelagrim-plugin RENAME copyright COMPONENT plugin)
set(CPACK_COMPONENTS_ALL plugin)

if(PELAGRIM_HOST)
  list(APPEND CPACK_COMPONENTS_ALL survey)
  install(TARGETS pelagrim-survey RUNTIME DESTINATION bin COMPONENT survey)
  install(FILES LICENSE DESTINATION share/doc/pelagrim-survey RENAME copyright COMPONENT survey)
  install(FILES docs/exporting.md docs/file-formats.md docs/receivers.md docs/recordings.md
      docs/surveying-well.md
    DESTINATION share/doc/pelagrim-survey COMPONENT survey)
  install(FILES packaging/pelagrim-survey.service
    DESTINATION share/doc/pelagrim-survey/examples COMPONENT survey)
  install(FILES packaging/pelagrim-survey.1 DESTINATION share/man/man1 COMPONENT survey)
  install(FILES packaging/pelagrim-survey.bash-completion
    DESTINATION share/bash-completion/completions RENAME pelagrim-survey COMPONENT survey)
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
set(CPACK_DEBIAN_PLUGIN_PACKAGE_NAME pelagrim-plugin)
set(CPACK_COMPONENT_PLUGIN_DESCRIPTION "spectrum survey plug-in for the Orvane receiver
Moves the receiver across a band, finds the signals in it and keeps a list
of what was heard where, how strong and how often.")
set(CPACK_DEBIAN_SURVEY_PACKAGE_NAME pelagrim-survey)
set(CPACK_DEBIAN_SURVEY_PACKAGE_DEPENDS "pelagrim-plugin (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_SURVEY_PACKAGE_SUGGESTS soapysdr-module-all)
set(CPACK_COMPONENT_SURVEY_DESCRIPTION "survey a band from a terminal, a recording or a small box
Runs the Pelagrim plug-in without the receiver's window: on recordings, on
live receivers or on a simulated band, with a live view or JSON lines.")
include(CPack)
