# `cmake --install build --prefix DIR` lays the program folder out in DIR,
# exactly as the build leaves it in build/bin: the game keeps its settings and
# saved games beside itself, so DIR is a folder the player owns.
install(TARGETS quorvel DESTINATION .)
install(TARGETS quorvel-levels DESTINATION .)
install(FILES ${QUORVEL_BIN_DIR}/QVL.ZHN ${QUORVEL_BIN_DIR}/qvl.html DESTINATION .)
install(DIRECTORY ${QUORVEL_BIN_DIR}/skins/ DESTINATION skins)
install(DIRECTORY ${CMAKE_BINARY_DIR}/art/icons/ DESTINATION icons)

# The desktop entry names the folder it was installed into.
install(CODE "
    set(QUORVEL_FOLDER \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}\")
    configure_file(\"${PROJECT_SOURCE_DIR}/data/desktop/quorvel.desktop.in\"
                   \"\${QUORVEL_FOLDER}/quorvel.desktop\" @ONLY)
    message(STATUS \"Installing: \${QUORVEL_FOLDER}/quorvel.desktop\")
")
