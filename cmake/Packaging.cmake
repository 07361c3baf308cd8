# The Debian package: "cpack -G DEB" in the build folder writes
# quillmorph_<version>_amd64.deb from what "cmake --install" lays out.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME quillmorph)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_CONTACT "The Quillmorph developers <quillmorph@users.noreply.github.com>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "convert WordPerfect documents and graphics")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION "Quillmorph rescues WordPerfect files: it converts WordPerfect documents
(4.2 to X, and the Macintosh versions) to OpenDocument text or classic RTF,
WordPerfect graphics to PNG or SVG, and writes WordPerfect 6 or 5.1 files
from OpenDocument, Word, RTF, HTML and plain text.
.
The package holds the desktop application and quillmorph-convert, its
command-line companion for whole archives.")
set(CPACK_DEBIAN_PACKAGE_SECTION text)
set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "https://github.com/quillmorph/quillmorph")
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)

# The shared libraries decide most of Depends (dpkg-shlibdeps); the converters
# we ship as links in lib/quillmorph/Files come from their own packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# libwmf draws metafiles with the URW base-35 fonts it expects to find.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "libwpd-tools, libwpg-tools, fonts-urw-base35")
# Office documents are read by LibreOffice, else by pandoc.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "libreoffice-writer | libreoffice-writer-nogui, pandoc")

# What Debian expects of the files themselves: stripped programs, folders
# 0755, and control files with the permissions dpkg gives them.
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/RelativeToolLinks.cmake)

include(CPack)
