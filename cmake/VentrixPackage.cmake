# The documents and examples of an installation, and the settings of the Debian package, which "./dev package" builds.
install(FILES LICENSE DESTINATION share/doc/ventrix RENAME copyright)
install(FILES README.md DESTINATION share/doc/ventrix)
install(DIRECTORY docs DESTINATION share/doc/ventrix)
install(DIRECTORY examples/docbook examples/pump-guide examples/service-note examples/shared
    DESTINATION share/doc/ventrix/examples)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ventrix)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
# As with Debian's own tools, whoever builds the package answers for it. Nobody does for one without a name, whose domain
# does not exist.
if(DEFINED ENV{DEBFULLNAME} AND DEFINED ENV{DEBEMAIL})
    set(CPACK_PACKAGE_CONTACT "$ENV{DEBFULLNAME} <$ENV{DEBEMAIL}>")
else()
    set(CPACK_PACKAGE_CONTACT "Local build without a maintainer <nobody@ventrix.invalid>")
endif()
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "publish DITA and other XML, and preserve what would be lost")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Ventrix publishes DITA and other XML as HTML and preserves what a
transformation would lose: the audience and product of a paragraph, the
inline element around a word, and the source file and XPath of each passage.")
set(CPACK_DEBIAN_PACKAGE_SECTION text)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "dita-ot, docbook-xsl, libsaxonhe-java")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
# Permissions must not depend on those of the checkout or the umask.
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE
    WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
include(CPack)

# Debian requires a changelog, compressed without the name and the time of the file.
string(TIMESTAMP changelog_date "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(${CMAKE_CURRENT_LIST_DIR}/changelog.in ${CMAKE_BINARY_DIR}/changelog @ONLY)
execute_process(COMMAND gzip -9nkf ${CMAKE_BINARY_DIR}/changelog COMMAND_ERROR_IS_FATAL ANY)
install(FILES ${CMAKE_BINARY_DIR}/changelog.gz DESTINATION share/doc/ventrix)
