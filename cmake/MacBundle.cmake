# SPDX-License-Identifier: MIT
# velkor_make_mac_bundle(<target>)
#
# Turns the application executable into Velkor.app: an agent app (no Dock
# icon until it asks for one) with the bundle identifier org.velkor.Velkor,
# the project version, the app icon, and the macOS backend linked in.
# Call it under if(APPLE) once the executable target exists.
function(velkor_make_mac_bundle target)
    set(mac_dir "${PROJECT_SOURCE_DIR}/src/platform/mac")
    set(icon "${mac_dir}/Velkor.icns")
    target_sources(${target} PRIVATE "${icon}")
    set_source_files_properties("${icon}" PROPERTIES MACOSX_PACKAGE_LOCATION Resources)
    set_target_properties(${target} PROPERTIES
        MACOSX_BUNDLE TRUE
        OUTPUT_NAME Velkor
        MACOSX_BUNDLE_INFO_PLIST "${mac_dir}/Info.plist.in"
        MACOSX_BUNDLE_GUI_IDENTIFIER org.velkor.Velkor
        MACOSX_BUNDLE_BUNDLE_NAME Velkor
        MACOSX_BUNDLE_ICON_FILE Velkor.icns
        MACOSX_BUNDLE_SHORT_VERSION_STRING "${PROJECT_VERSION}"
        MACOSX_BUNDLE_BUNDLE_VERSION "${PROJECT_VERSION}")
    target_link_libraries(${target} PRIVATE velkor_platform_mac)
endfunction()
