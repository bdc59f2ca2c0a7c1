# The cross build writes the sample aircraft and parkingspecs.db with generators that run on this machine:
# they are built here by a native build of the same sources, configured and run by the cross build itself.
include(ExternalProject)

set(FLEETWRIGHT_HOST_TOOLS_DIR "${CMAKE_BINARY_DIR}/host-tools")
ExternalProject_Add(host_tools
    SOURCE_DIR "${PROJECT_SOURCE_DIR}"
    BINARY_DIR "${FLEETWRIGHT_HOST_TOOLS_DIR}"
    # No optimisation: the generators do little work, and the engine compiles in half the time.
    CMAKE_ARGS -DFLEETWRIGHT_HOST_TOOLS_ONLY=ON -DCMAKE_BUILD_TYPE=
    INSTALL_COMMAND ""
    BUILD_ALWAYS ON
    BUILD_BYPRODUCTS
        "${FLEETWRIGHT_HOST_TOOLS_DIR}/tools/sampleaircraft/fleetwright-sampleaircraft"
        "${FLEETWRIGHT_HOST_TOOLS_DIR}/tools/parkingdb/fleetwright-parkingdb"
)
