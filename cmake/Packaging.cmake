# Installation and the Debian package: the application folder
# /opt/ORV Softworks/FBT (FBT, corvane, libcorvane.so, Data/, demo/), the corvane
# command on the PATH, a menu entry and its icon.
set(FBT_APP_DIR "opt/ORV Softworks/FBT")

install(TARGETS FBT corvane_cli corvane
    RUNTIME DESTINATION "${FBT_APP_DIR}"
    LIBRARY DESTINATION "${FBT_APP_DIR}")
install(DIRECTORY ${CMAKE_SOURCE_DIR}/data/Data/ DESTINATION "${FBT_APP_DIR}/Data"
    PATTERN ".keep" EXCLUDE)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/data/demo/ DESTINATION "${FBT_APP_DIR}/demo")

# corvane on the PATH; /proc/self/exe resolves the link, so it still finds its application folder.
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/packaging)
file(CREATE_LINK "/${FBT_APP_DIR}/corvane" ${CMAKE_BINARY_DIR}/packaging/corvane SYMBOLIC)
install(FILES ${CMAKE_BINARY_DIR}/packaging/corvane DESTINATION usr/bin)

install(FILES ${CMAKE_SOURCE_DIR}/host/fbt.desktop DESTINATION usr/share/applications)
install(FILES ${CMAKE_SOURCE_DIR}/host/fbt.png DESTINATION usr/share/icons/hicolor/256x256/apps)
install(FILES ${CMAKE_SOURCE_DIR}/host/fbt.svg DESTINATION usr/share/icons/hicolor/scalable/apps)

# The manual page and the bash completion (made in cli/), the copyright and the changelog.
install(FILES ${CMAKE_BINARY_DIR}/packaging/corvane.1.gz DESTINATION usr/share/man/man1)
install(FILES ${CMAKE_BINARY_DIR}/packaging/corvane.bash-completion DESTINATION usr/share/bash-completion/completions
    RENAME corvane)
install(FILES ${CMAKE_SOURCE_DIR}/cmake/copyright DESTINATION usr/share/doc/fbt)
# An add-on package from outside the distribution: /opt is its place.
install(FILES ${CMAKE_SOURCE_DIR}/cmake/lintian-overrides DESTINATION usr/share/lintian/overrides RENAME fbt)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/packaging/changelog)
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/packaging/changelog.gz
    COMMAND gzip -9nc ${CMAKE_SOURCE_DIR}/cmake/changelog > ${CMAKE_BINARY_DIR}/packaging/changelog.gz
    DEPENDS ${CMAKE_SOURCE_DIR}/cmake/changelog)
add_custom_target(fbt_changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/packaging/changelog.gz)
install(FILES ${CMAKE_BINARY_DIR}/packaging/changelog.gz DESTINATION usr/share/doc/fbt)

# No maintainer scripts: the installed folder stays root's, and a user who cannot
# write it gets a folder of their own (~/.local/share/orv-softworks/FBT), which
# removing the package leaves alone.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME fbt)
set(CPACK_PACKAGE_VENDOR "ORV Softworks")
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Fringe Benefit Tax returns for the clients of a practice")
set(CPACK_PACKAGE_DESCRIPTION "FBT and its component Corvane: client master, bank master, additional
information of the returns, return register, client details report, backup,
restoration, check and repair of the tables, and the corvane command for the
same services without a screen.")
set(CPACK_PACKAGING_INSTALL_PREFIX "/")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "ORV Softworks <support@orv-softworks.invalid>")
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CORVANE_RUNTIME_DIR}")
# Loaded at run time or started as programs, so not found by shlibdeps.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libqt6sql6-mysql, qt6-qpa-plugins, mariadb-server-core, mariadb-client-core, fonts-dejavu-core")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
