# Header, libraries with their level folders, the CMake package, the pkg-config file, zetpic and its man page.
include(CMakePackageConfigHelpers)
set(zetpxl_package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/zetpxl)

install(FILES include/zetpxl.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
install(TARGETS zetpxl EXPORT zetpxlTargets LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
foreach(level IN LISTS ZETPXL_LEVELS)
  install(TARGETS zetpxl_${level}
          LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/glibc-hwcaps/${level} NAMELINK_SKIP)
endforeach()
install(EXPORT zetpxlTargets NAMESPACE zetpxl:: DESTINATION ${zetpxl_package_dir})

configure_package_config_file(cmake/zetpxlConfig.cmake.in ${PROJECT_BINARY_DIR}/zetpxlConfig.cmake
                              INSTALL_DESTINATION ${zetpxl_package_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/zetpxlConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/zetpxlConfig.cmake ${PROJECT_BINARY_DIR}/zetpxlConfigVersion.cmake
        DESTINATION ${zetpxl_package_dir})

# The pkg-config file tells its folders from where it lies itself, so that the installed tree can be moved.
cmake_path(SET zetpxl_pc_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
cmake_path(RELATIVE_PATH CMAKE_INSTALL_PREFIX BASE_DIRECTORY ${zetpxl_pc_dir} OUTPUT_VARIABLE zetpxl_pc_prefix)
configure_file(cmake/zetpxl.pc.in ${PROJECT_BINARY_DIR}/zetpxl.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/zetpxl.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

if(ZETPXL_BUILD_TOOLS)
  install(TARGETS zetpic RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
  install(FILES ${PROJECT_BINARY_DIR}/zetpic.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()
