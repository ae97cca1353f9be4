# The last words of making packages: what there is now, with sizes.
file(GLOB files "${PACKAGES}/ImporterOrvantis-*" "${PACKAGES}/importer-validator-*")
message("Packages in ${PACKAGES}:")
foreach(file IN LISTS files)
    file(SIZE "${file}" bytes)
    get_filename_component(name "${file}" NAME)
    message("  ${name}  ${bytes} bytes")
endforeach()
