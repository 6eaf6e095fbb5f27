# The Debian package: "cpack -G DEB" in a build folder makes tidemark_<version>_<architecture>.deb.
#
# It is meant for a release build that was configured for the prefix /usr (the preset "package"); packaging/ includes this
# after it has said what is installed.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tidemark)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "The Tidemark developers")
set(CPACK_PACKAGE_CONTACT "${TIDEMARK_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "keeps chosen folders tidy, and can take it back")
set(CPACK_PACKAGE_DESCRIPTION
    "Tidemark files screenshots under their date, puts installers that nobody has\n\
opened for 30 days into the Trash, moves downloads older than 30 days into a\n\
month folder, and files Markdown notes by their title and date.\n\n\
Every move is written into a journal before it happens, so the last sweep can\n\
always be taken back. Nothing is ever deleted or overwritten.")
set(CPACK_RESOURCE_FILE_LICENSE "${PROJECT_SOURCE_DIR}/LICENSE")
set(CPACK_STRIP_FILES ON)
# The files know the prefix for which the build was configured, so that is the package's; some of them lie outside of it.
set(CPACK_SET_DESTDIR ON)
set(CPACK_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
if(TIDEMARK_HOMEPAGE)
    set(CPACK_DEBIAN_PACKAGE_HOMEPAGE "${TIDEMARK_HOMEPAGE}")
endif()
# The icon may be looked for in hicolor only where that theme is; Wayland's part of Qt is loaded where it is wanted.
set(CPACK_DEBIAN_PACKAGE_DEPENDS hicolor-icon-theme)
# And the authorities that tell which web servers are to be trusted with updates.
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ca-certificates, qt6-wayland")
set(conffiles "${CMAKE_CURRENT_BINARY_DIR}/conffiles")
file(WRITE "${conffiles}" "/etc/xdg/autostart/io.tidemark.Tidemark.desktop\n")
if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
    set(CPACK_DEBIAN_PACKAGE_CONTROL_EXTRA "${conffiles}")
endif()
include(CPack)
