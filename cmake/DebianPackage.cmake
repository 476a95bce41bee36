# SPDX-License-Identifier: MIT
# The Debian package that scripts/package.sh builds with CPack: everything the
# install rules install, under the prefix the build was configured with
# (/usr for a package). Library dependencies come from dpkg-shlibdeps; what
# Velkor loads at run time, which no linker records, is named below.

set(VELKOR_PACKAGE_MAINTAINER "${VELKOR_CHANGELOG_SIGNER}" CACHE STRING
    "Maintainer of the Debian package (default: who signed the newest changelog entry)")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME velkor)
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "keyboard-driven app and window switcher")
# Lines as they appear in the package's description (at most 80 columns).
string(JOIN "\n" CPACK_PACKAGE_DESCRIPTION
    "Velkor brings a running app to the front with two keys: hold the right"
    "Super key and press the first letter of the app's name. Pressing the letter"
    "again cycles through the apps that share it, in the order last chosen;"
    "typing more letters searches running and installed apps and can launch one."
    ""
    "A double tap of the key opens a switcher of all windows, and digits jump"
    "between virtual desktops. Velkor lives in the tray and shows a small"
    "overlay while the key is held. It needs an X11 session.")
set(CPACK_PACKAGING_INSTALL_PREFIX "${CMAKE_INSTALL_PREFIX}")
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS ${CMAKE_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS})
set(CPACK_STRIP_FILES ON)

set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_MAINTAINER "${VELKOR_PACKAGE_MAINTAINER}")
set(CPACK_DEBIAN_PACKAGE_SECTION x11)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# Qt's X11 platform plugin is loaded by name when Velkor starts; the overlay's
# titles use League Spartan where it is installed.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "fonts-league-spartan")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

include(CPack)
