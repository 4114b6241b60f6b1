# Live receivers by way of SoapySDR, which a build can do without.
target_sources(pelagrim_host_lib PRIVATE
  sources/gain_setting.cpp
  sources/offset_tuned_source.cpp
  $<IF:$<BOOL:${PELAGRIM_SOAPY}>,sources/soapy_receiver.cpp,sources/no_receiver.cpp>)
if(PELAGRIM_SOAPY)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(SOAPY REQUIRED IMPORTED_TARGET GLOBAL SoapySDR>=0.8)
  target_link_libraries(pelagrim_host_lib PRIVATE PkgConfig::SOAPY)
endif()
