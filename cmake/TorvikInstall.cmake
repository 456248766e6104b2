# What `cmake --install` puts where, and the Debian package that is made of it (`cpack` in the build folder). The program
# keeps its data link, settings file and logs in its application folder; "deploy.ini" beside it names one that can be
# written to: /var/lib/torvikpossync for the package, var/lib/torvikpossync below any other prefix.

set(TORVIK_HOME lib/torvikpossync)  # of the executable, below the prefix

install(TARGETS TorvikPosSync RUNTIME DESTINATION ${TORVIK_HOME})
install(FILES packaging/torvikpossync.desktop DESTINATION share/applications)
install(FILES packaging/torvikpossync.svg DESTINATION share/icons/hicolor/scalable/apps)
install(FILES README.md packaging/copyright DESTINATION share/doc/torvikpossync)
install(FILES docs/handbok.md docs/failures.md DESTINATION share/doc/torvikpossync/docs)
install(DIRECTORY docs/pictures DESTINATION share/doc/torvikpossync/docs FILES_MATCHING PATTERN "*.png")

install(CODE [[
    if(CMAKE_INSTALL_PREFIX MATCHES "(^|/)usr$")
        set(data ../../../var/lib/torvikpossync)
    else()
        set(data ../../var/lib/torvikpossync)
    endif()
    set(prefix "$ENV{DESTDIR}${CMAKE_INSTALL_PREFIX}")
    set(home "${prefix}/lib/torvikpossync")
    file(WRITE "${home}/deploy.ini" "[deploy]\nfolder=${data}\n")
    cmake_path(ABSOLUTE_PATH data BASE_DIRECTORY "${home}" NORMALIZE OUTPUT_VARIABLE folder)
    file(MAKE_DIRECTORY "${folder}" "${prefix}/bin")
    file(CREATE_LINK ../lib/torvikpossync/TorvikPosSync "${prefix}/bin/TorvikPosSync" SYMBOLIC)
]])

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME torvikpossync)
set(CPACK_PACKAGE_VENDOR Vestmar)
set(CPACK_PACKAGE_CONTACT "Vestmar <drift@vestmar.example>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "keeps the tills of a retail chain and its back office in step")
set(CPACK_PACKAGE_DESCRIPTION "TorvikPosSync fetches settlements and sales from the tills of a retail chain to the
 back-office database, and sends items, prices, customers and staff to the tills. It is run by an operator from its
 window, or by itself at a set time each night.")
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR}/packages)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION misc)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# What is opened while it runs and no linker knows of: the ODBC manager, a driver, the screen.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libodbc2, msodbcsql18 | tdsodbc, qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA ${CMAKE_SOURCE_DIR}/packaging/postinst ${CMAKE_SOURCE_DIR}/packaging/postrm)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)
