# What `cmake --install` puts under the prefix: the header, the shared library (with the import
# libraries Windows hosts link), the CMake package VexcapLib::VexcapLib, vexcaplib.pc for
# pkg-config, and the documents. The tools install themselves (tools/).
include(CMakePackageConfigHelpers)

set(VEXCAP_CMAKE_PACKAGE_DIR ${CMAKE_INSTALL_LIBDIR}/cmake/VexcapLib)

install(TARGETS VexcapLib EXPORT VexcapLibTargets
        RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR}
        LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(FILES include/vexcap/vexcap.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/vexcap)
if(WIN32)
  # The import library for MSVC hosts, where the build makes one beside the DLL.
  install(FILES $<TARGET_FILE_DIR:VexcapLib>/VexcapLib.lib DESTINATION ${CMAKE_INSTALL_LIBDIR} OPTIONAL)
endif()

install(EXPORT VexcapLibTargets NAMESPACE VexcapLib:: DESTINATION ${VEXCAP_CMAKE_PACKAGE_DIR})
configure_package_config_file(cmake/VexcapLibConfig.cmake.in
                              ${CMAKE_CURRENT_BINARY_DIR}/VexcapLibConfig.cmake
                              INSTALL_DESTINATION ${VEXCAP_CMAKE_PACKAGE_DIR})
# 1.x hosts keep working with any later 1.x library.
write_basic_package_version_file(${CMAKE_CURRENT_BINARY_DIR}/VexcapLibConfigVersion.cmake
                                 COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/VexcapLibConfig.cmake
              ${CMAKE_CURRENT_BINARY_DIR}/VexcapLibConfigVersion.cmake
        DESTINATION ${VEXCAP_CMAKE_PACKAGE_DIR})

# vexcaplib.pc finds the prefix from its own place, so the installed tree can move.
file(RELATIVE_PATH VEXCAP_PC_TO_PREFIX /prefix/${CMAKE_INSTALL_LIBDIR}/pkgconfig /prefix)
configure_file(cmake/vexcaplib.pc.in ${CMAKE_CURRENT_BINARY_DIR}/vexcaplib.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/vexcaplib.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES README.md CHANGELOG.md LICENSE docs/host-guide.md DESTINATION ${CMAKE_INSTALL_DOCDIR})
