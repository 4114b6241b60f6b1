# Live receivers by way of SoapySDR, which a build can do without.
target_sources(pelagrim_host_lib PRIVATE
  gain_setting.cpp
  offset_tuned_source.cpp
  $<IF:$<BOOL:${PELAGRIM_SOAPY}>,soapy_receiver.cpp,no_receiver.cpp>)
if(PELAGRIM_SOAPY)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(SOAPY REQUIRED IMPORTED_TARGET GLOBAL SoapySDR>=0.8)
  target_link_libraries(pelagrim_host_lib PRIVATE PkgConfig::SOAPY)
endif()
