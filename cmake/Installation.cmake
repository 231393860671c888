# The contents of an installation, and the Debian package (scripts/package).
include_guard()

set(SONVEL_WEBSITE "" CACHE STRING
    "Where the docs of this tree are published; without it software centres show neither a homepage nor pictures")
option(SONVEL_DEBIAN_PACKAGE "Install for a Debian package, without self-updates" OFF)

set(id com.quellmarsh.sonvel)
set(icons "${CMAKE_INSTALL_DATADIR}/icons/hicolor")
set(packaging "${PROJECT_SOURCE_DIR}/packaging")

install(TARGETS sonvel RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
install(TARGETS sonvel-guardian RUNTIME DESTINATION "${SONVEL_HELPERS_DIR}")
install(FILES "${packaging}/${id}.desktop" DESTINATION "${CMAKE_INSTALL_DATADIR}/applications")
install(FILES "${PROJECT_SOURCE_DIR}/data/sonvel.1" DESTINATION "${CMAKE_INSTALL_MANDIR}/man1")
install(FILES "${PROJECT_SOURCE_DIR}/data/sonvel.bash-completion"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" RENAME sonvel)
install(FILES "${PROJECT_SOURCE_DIR}/src/remote/com.quellmarsh.sonvel.Mixer1.xml"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/dbus-1/interfaces")

configure_file("${packaging}/${id}.service.in" "${PROJECT_BINARY_DIR}/${id}.service" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/${id}.service" DESTINATION "${CMAKE_INSTALL_DATADIR}/dbus-1/services")

file(STRINGS "${PROJECT_SOURCE_DIR}/CHANGELOG.md" newest REGEX "^## \\[[0-9]" LIMIT_COUNT 1)
string(REGEX MATCH "[0-9]+-[0-9]+-[0-9]+" SONVEL_RELEASE_DATE "${newest}")
if(NOT SONVEL_RELEASE_DATE)  # no release yet
  string(TIMESTAMP SONVEL_RELEASE_DATE "%Y-%m-%d" UTC)  # of SOURCE_DATE_EPOCH if set
endif()
file(READ "${packaging}/${id}.metainfo.xml.in" metainfo)
if(NOT SONVEL_WEBSITE)
  string(REGEX REPLACE "  <url type=\"homepage\">[^\n]*\n" "" metainfo "${metainfo}")
  string(REGEX REPLACE "  <screenshots>.*</screenshots>\n" "" metainfo "${metainfo}")
endif()
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/${id}.metainfo.xml" CONTENT "${metainfo}" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/${id}.metainfo.xml" DESTINATION "${CMAKE_INSTALL_DATADIR}/metainfo")

install(FILES "${packaging}/icons/${id}.svg" DESTINATION "${icons}/scalable/apps")
install(FILES "${packaging}/icons/${id}-symbolic.svg" "${packaging}/icons/${id}-muted-symbolic.svg"
    "${packaging}/icons/${id}-amplified-symbolic.svg" DESTINATION "${icons}/symbolic/apps")
find_program(RSVG_CONVERT rsvg-convert)
if(RSVG_CONVERT)  # otherwise only the scalable icon is installed
  foreach(size IN ITEMS 16 22 24 32 48 64 128 256)
    set(picture "${PROJECT_BINARY_DIR}/icons/${size}.png")
    add_custom_command(OUTPUT "${picture}"
        COMMAND "${CMAKE_COMMAND}" -E make_directory "${PROJECT_BINARY_DIR}/icons"
        COMMAND "${RSVG_CONVERT}" -w ${size} -h ${size} -o "${picture}" "${packaging}/icons/${id}.svg"
        DEPENDS "${packaging}/icons/${id}.svg" VERBATIM)
    list(APPEND pictures "${picture}")
    install(FILES "${picture}" DESTINATION "${icons}/${size}x${size}/apps" RENAME "${id}.png")
  endforeach()
  add_custom_target(sonvel-icons ALL DEPENDS ${pictures})
endif()

install(FILES CONTRIBUTING.md README.md DESTINATION "${CMAKE_INSTALL_DOCDIR}")
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DOCDIR}")  # README.md links to it there
if(NOT SONVEL_DEBIAN_PACKAGE)
  install(FILES CHANGELOG.md LICENSE DESTINATION "${CMAKE_INSTALL_DOCDIR}")
  return()
endif()

set(SONVEL_CONTACT "Unnamed builder <nobody@example.org>" CACHE STRING "Maintainer of the package")
set(SONVEL_DEBIAN_RELEASE 1 CACHE STRING "Debian revision of the package")
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file("${packaging}/debian/changelog.in" "${PROJECT_BINARY_DIR}/changelog.Debian" @ONLY)
install(FILES "${packaging}/information.json" DESTINATION "${CMAKE_INSTALL_DATADIR}/sonvel")
install(FILES "${packaging}/debian/copyright" DESTINATION "${CMAKE_INSTALL_DOCDIR}")
# Compressed, as Debian's policy requires.
install(CODE "
  set(root \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
  file(COPY_FILE \"${PROJECT_SOURCE_DIR}/CHANGELOG.md\" \"\${root}/${CMAKE_INSTALL_DOCDIR}/changelog\")
  file(COPY_FILE \"${PROJECT_BINARY_DIR}/changelog.Debian\" \"\${root}/${CMAKE_INSTALL_DOCDIR}/changelog.Debian\")
  execute_process(COMMAND_ERROR_IS_FATAL ANY COMMAND gzip -9nf \"\${root}/${CMAKE_INSTALL_DOCDIR}/changelog\"
      \"\${root}/${CMAKE_INSTALL_DOCDIR}/changelog.Debian\" \"\${root}/${CMAKE_INSTALL_MANDIR}/man1/sonvel.1\")")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${SONVEL_CONTACT}")
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE "${SONVEL_DEBIAN_RELEASE}")
set(CPACK_DEBIAN_PACKAGE_SECTION sound)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The QML modules that the views import, and packages for platform plugins and icons. Without the configuration files of
# pipewire-bin PipeWire's library cannot be set up.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qml6-module-qtquick, qml6-module-qtquick-layouts, qml6-module-qtquick-templates, qml6-module-qtquick-window, qml6-module-qtqml, qml6-module-qtqml-workerscript, libqt6svg6 (<< 6.6) | qt6-svg-plugins, pipewire-bin, hicolor-icon-theme")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "pipewire-audio, qt6-wayland")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "volume for every application")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Sonvel gives each program that plays sound its own volume, from 0 to 200
percent, its own mute, meter and output device, on a desktop that runs
PipeWire. It needs no driver and no special rights. Quitting it gives every
program its own sound back.")
include(CPack)
