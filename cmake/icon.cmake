# The program's icon, drawn once as data/icon/fleetwright.svg: the build renders it at the sizes Windows
# asks for and packs them into one .ico (the largest as PNG, as Windows takes it since Vista).
#
#   fleetwright_windows_icon(TARGET RC_FILE)   gives TARGET the icon through its resource script RC_FILE,
#                                               which names the .ico as FLEETWRIGHT_ICO (set here for the
#                                               rest of the build: the installer shows it too)
find_program(FLEETWRIGHT_RSVG_CONVERT rsvg-convert)
find_program(FLEETWRIGHT_ICOTOOL icotool)

set(FLEETWRIGHT_ICO "${CMAKE_BINARY_DIR}/icon/fleetwright.ico" CACHE INTERNAL "The program's icon for Windows")

function(fleetwright_windows_icon target rc_file)
    if(NOT TARGET fleetwright_icon)
        if(NOT FLEETWRIGHT_RSVG_CONVERT OR NOT FLEETWRIGHT_ICOTOOL)
            message(FATAL_ERROR "The Windows icon needs rsvg-convert and icotool (Debian: librsvg2-bin, icoutils)")
        endif()
        set(svg "${PROJECT_SOURCE_DIR}/data/icon/fleetwright.svg")
        get_filename_component(folder "${FLEETWRIGHT_ICO}" DIRECTORY)
        set(pngs)
        set(commands)
        foreach(size 16 24 32 48 64 128 256)
            set(png "${folder}/fleetwright-${size}.png")
            list(APPEND pngs "${png}")
            list(APPEND commands COMMAND "${FLEETWRIGHT_RSVG_CONVERT}" -w ${size} -h ${size} -o "${png}" "${svg}")
        endforeach()
        list(POP_BACK pngs largest)
        add_custom_command(OUTPUT "${FLEETWRIGHT_ICO}" "${largest}" ${pngs}
            COMMAND ${CMAKE_COMMAND} -E make_directory "${folder}"
            ${commands}
            COMMAND "${FLEETWRIGHT_ICOTOOL}" --create --output "${FLEETWRIGHT_ICO}" ${pngs} "--raw=${largest}"
            DEPENDS "${svg}"
            COMMENT "Drawing the program's icon"
            VERBATIM)
        add_custom_target(fleetwright_icon DEPENDS "${FLEETWRIGHT_ICO}")
    endif()
    target_sources(${target} PRIVATE "${rc_file}")
    set_source_files_properties("${rc_file}" PROPERTIES OBJECT_DEPENDS "${FLEETWRIGHT_ICO}")
    add_dependencies(${target} fleetwright_icon)
endfunction()
