# What a host builds against: the library, its public headers, a CMake package and a pkg-config file.
# All of it may be moved after the install. The library's sources need nothing of this file.

include(CMakePackageConfigHelpers)

# The public headers; what isn't listed here is internal and stays at home.
target_sources(Tarsel PUBLIC FILE_SET HEADERS BASE_DIRS ${PROJECT_SOURCE_DIR} FILES
    Tarsel.h
    core/CFunctions.h
    core/CoreGlobal.h
    core/TarselIDL.h
    data/DataPtr.h
    data/Geometry.h
    data/Matrix.h
    data/ParticleGroup.h
    data/Waveform.h
    experiment/Experiment.h
    system/DFile.h
    system/DIni.h
    system/DLLConnect.h
    system/DLibrary.h
    system/DSystem.h
    types/DArray.h
    types/DString.h
    types/DStringArray.h
    types/MemoryWatch.h
)

install(TARGETS Tarsel EXPORT TarselTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}
    FILE_SET HEADERS DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tarsel
)

# The functions for programs in the IDL language look for the library two folders above themselves.
install(FILES idl/tarsel.pro DESTINATION ${CMAKE_INSTALL_LIBDIR}/tarsel/idl)

set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/Tarsel)
install(EXPORT TarselTargets NAMESPACE Tarsel:: DESTINATION ${package_folder})
configure_package_config_file(
    cmake/TarselConfig.cmake.in ${CMAKE_CURRENT_BINARY_DIR}/TarselConfig.cmake
    INSTALL_DESTINATION ${package_folder}
)
write_basic_package_version_file(
    ${CMAKE_CURRENT_BINARY_DIR}/TarselConfigVersion.cmake COMPATIBILITY SameMajorVersion
)
install(FILES
    ${CMAKE_CURRENT_BINARY_DIR}/TarselConfig.cmake
    ${CMAKE_CURRENT_BINARY_DIR}/TarselConfigVersion.cmake
    DESTINATION ${package_folder}
)

# The pkg-config file finds its prefix from its own place, however deep the library folder lies.
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_LIBDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
    OUTPUT_VARIABLE library_folder)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_FULL_INCLUDEDIR BASE_DIRECTORY ${CMAKE_INSTALL_PREFIX}
    OUTPUT_VARIABLE include_folder)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX
    BASE_DIRECTORY ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig OUTPUT_VARIABLE prefix_from_pkgconfig)
configure_file(cmake/tarsel.pc.in ${CMAKE_CURRENT_BINARY_DIR}/tarsel.pc @ONLY)
install(FILES ${CMAKE_CURRENT_BINARY_DIR}/tarsel.pc DESTINATION ${pkgconfig_folder})
