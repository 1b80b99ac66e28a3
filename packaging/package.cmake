# `cpack -G DEB` in a build folder makes a Debian package of what is installed.
set(CPACK_PACKAGE_CONTACT "The tavu authors <tavu@localhost>")
set(CPACK_PACKAGE_DESCRIPTION "A headless network audio player with a page to steer it by, its plug-in
for Amazon Music, a terminal client, what further plug-ins are built with, and an emulator of the
service.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
# Libraries are found by what the programs are linked with; GStreamer's plug-ins are linked by nobody.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}/src)
set(CPACK_DEBIAN_PACKAGE_DEPENDS
    "gstreamer1.0-plugins-base, gstreamer1.0-plugins-good, gstreamer1.0-libav, gstreamer1.0-alsa")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "gstreamer1.0-pulseaudio, dbus")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_CURRENT_LIST_DIR}/debian/postinst
                                       ${CMAKE_CURRENT_LIST_DIR}/debian/prerm)
include(CPack)
