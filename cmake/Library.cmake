# The shared library for the baseline and once more for each processor level, and the static form of the tests.
# Levels are found by the loader itself, in glibc-hwcaps folders beside the baseline library. A level is added to this
# list when a machine can test it.
set(zetpxl_levels "")
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64" AND CMAKE_SIZEOF_VOID_P EQUAL 8)
  set(zetpxl_levels x86-64-v3 x86-64-v4)
endif()
set(ZETPXL_LEVELS "${zetpxl_levels}" CACHE STRING "Processor levels that get a shared library of their own")

file(GLOB ZETPXL_SOURCES CONFIGURE_DEPENDS
  ${PROJECT_SOURCE_DIR}/core/*.cpp ${PROJECT_SOURCE_DIR}/pixel/*.cpp ${PROJECT_SOURCE_DIR}/rank/*.cpp
  ${PROJECT_SOURCE_DIR}/filter/*.cpp ${PROJECT_SOURCE_DIR}/geometry/*.cpp ${PROJECT_SOURCE_DIR}/convert/*.cpp)

# The exported operations, by name: internal operations bear zet names too.
set(ZETPXL_SYMBOL_LIST ${PROJECT_SOURCE_DIR}/cmake/exported-symbols.txt)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${ZETPXL_SYMBOL_LIST})
file(STRINGS ${ZETPXL_SYMBOL_LIST} zetpxl_symbols)
list(JOIN zetpxl_symbols ";\n    " zetpxl_symbol_lines)
set(ZETPXL_VERSION_SCRIPT ${PROJECT_BINARY_DIR}/zetpxl.map)
file(CONFIGURE OUTPUT ${ZETPXL_VERSION_SCRIPT}
     CONTENT "{\n  global:\n    @zetpxl_symbol_lines@;\n  local: *;\n};\n" @ONLY)

find_package(Threads REQUIRED)

function(zetpxl_add_library name kind level)
  add_library(${name} ${kind} ${ZETPXL_SOURCES})
  target_include_directories(${name}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include> $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${PROJECT_SOURCE_DIR})
  target_link_libraries(${name} PRIVATE $<BUILD_INTERFACE:zetpxl_flags> Threads::Threads)
  if(level)
    target_compile_options(${name} PRIVATE -march=${level})
  endif()
  # Rooms that run under another rounding mode than the compiler assumes.
  set_source_files_properties(${PROJECT_SOURCE_DIR}/filter/blurblock.cpp ${PROJECT_SOURCE_DIR}/filter/fixedfloats.cpp
                              PROPERTIES COMPILE_OPTIONS -frounding-math)
  # clang takes many minutes to check every lane of the sorting networks; g++ checks them in the other sanitized build.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_FLAGS MATCHES "-fsanitize=[a-z,]*undefined")
    set_source_files_properties(${PROJECT_SOURCE_DIR}/rank/mediannetwork.cpp
                                PROPERTIES COMPILE_OPTIONS -fno-sanitize=undefined)
  endif()
endfunction()

function(zetpxl_add_shared name level folder)
  zetpxl_add_library(${name} SHARED "${level}")
  set_target_properties(${name} PROPERTIES
    OUTPUT_NAME zetpxl
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON
    LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib/${folder}
    LINK_DEPENDS ${ZETPXL_VERSION_SCRIPT})
  target_link_options(${name} PRIVATE -Wl,--version-script=${ZETPXL_VERSION_SCRIPT} -Wl,--gc-sections)
  # A sanitizer's runtime comes with the program.
  if(NOT CMAKE_CXX_FLAGS MATCHES "-fsanitize")
    target_link_options(${name} PRIVATE -Wl,--no-undefined)
  endif()
endfunction()

zetpxl_add_shared(zetpxl "" "")
add_library(zetpxl::zetpxl ALIAS zetpxl)
set(ZETPXL_LEVEL_TARGETS "")
foreach(level IN LISTS ZETPXL_LEVELS)
  zetpxl_add_shared(zetpxl_${level} ${level} glibc-hwcaps/${level})
  list(APPEND ZETPXL_LEVEL_TARGETS zetpxl_${level})
endforeach()

if(ZETPXL_BUILD_TESTS)
  zetpxl_add_library(zetpxl_static STATIC "${ZETPXL_STATIC_LEVEL}")
  target_include_directories(zetpxl_static PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
endif()
