# `cmake --install build --prefix PREFIX` installs the game the way Linux
# installs games: the programs in PREFIX/games, the level file, the help page
# and the skins in PREFIX/share/games/quorvel, and the desktop entry, the
# AppStream metadata and the icons where desktops look for them. Installed so,
# the game keeps the player's files in their home (src/app/ProgramFolders.h);
# build/bin stays a portable program folder that keeps them beside itself.
# `cpack -G DEB` in the build folder packages the same tree for /usr.
set(QUORVEL_ID org.example.quorvel)
set(QUORVEL_RELEASE_DATE 2026-11-01)
set(QUORVEL_DATA_DIR share/games/quorvel)

install(TARGETS quorvel quorvel-levels DESTINATION games)
install(FILES ${QUORVEL_BIN_DIR}/QVL.ZHN ${QUORVEL_BIN_DIR}/qvl.html DESTINATION ${QUORVEL_DATA_DIR})
install(DIRECTORY ${QUORVEL_BIN_DIR}/skins/ DESTINATION ${QUORVEL_DATA_DIR}/skins)

foreach(icon_size IN ITEMS 16 32 48 64 128 256)
    set(icon_dir icons/hicolor/${icon_size}x${icon_size}/apps)
    install(FILES ${CMAKE_BINARY_DIR}/art/${icon_dir}/quorvel.png
        DESTINATION share/${icon_dir} RENAME ${QUORVEL_ID}.png)
endforeach()
install(FILES ${PROJECT_SOURCE_DIR}/data/art/icon.svg
    DESTINATION share/icons/hicolor/scalable/apps RENAME ${QUORVEL_ID}.svg)

configure_file(${PROJECT_SOURCE_DIR}/data/desktop/${QUORVEL_ID}.metainfo.xml.in
    ${CMAKE_BINARY_DIR}/desktop/${QUORVEL_ID}.metainfo.xml @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/desktop/${QUORVEL_ID}.metainfo.xml DESTINATION share/metainfo)

# The package's own papers, as Debian keeps them for every package.
file(READ ${PROJECT_SOURCE_DIR}/data/desktop/changelog QUORVEL_CHANGELOG)
string(REPLACE "@PROJECT_VERSION@" "${PROJECT_VERSION}" QUORVEL_CHANGELOG "${QUORVEL_CHANGELOG}")
file(WRITE ${CMAKE_BINARY_DIR}/desktop/changelog "${QUORVEL_CHANGELOG}")
add_custom_command(OUTPUT ${CMAKE_BINARY_DIR}/desktop/changelog.gz
    COMMAND gzip -9nkf ${CMAKE_BINARY_DIR}/desktop/changelog
    DEPENDS ${PROJECT_SOURCE_DIR}/data/desktop/changelog
    COMMENT "Compressing the changelog")
add_custom_target(quorvel_changelog ALL DEPENDS ${CMAKE_BINARY_DIR}/desktop/changelog.gz)
install(FILES ${PROJECT_SOURCE_DIR}/data/desktop/copyright ${CMAKE_BINARY_DIR}/desktop/changelog.gz
    DESTINATION share/doc/quorvel)

# The desktop entry starts the program where it was installed.
install(CODE "
    set(QUORVEL_GAMES_DIR \"\${CMAKE_INSTALL_PREFIX}/games\")
    set(entry \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/share/applications/${QUORVEL_ID}.desktop\")
    configure_file(\"${PROJECT_SOURCE_DIR}/data/desktop/${QUORVEL_ID}.desktop.in\" \"\${entry}\" @ONLY)
    message(STATUS \"Installing: \${entry}\")
")

# The Debian package. Its library dependencies are computed from the programs;
# what the libraries only recommend but the game needs is named here: the
# fonts the WMF library draws with, and the desktop's opener for the help page.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quorvel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PACKAGE_CONTACT "Quorvel team <quorvel@example.org>")
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "Quorvel team <quorvel@example.org>")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION games)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE https://quorvel.example.org/)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "fonts-urw-base35, xdg-utils")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "sliding-block puzzle with 70 levels and picture skins")
set(CPACK_PACKAGE_DESCRIPTION "A board of 4 columns by 5 rows holds ten blocks and leaves two cells free.
Drag the blocks with the mouse and bring the big one to the exit in the
middle of the bottom edge in as few steps as you can. Quorvel saves and
loads games and changes its look with picture skins.")
include(CPack)
