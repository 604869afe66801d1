# zetpxl.h compiles alone and without a warning, as C and as C++, and beside a declaration of the DIB header that a
# program brings along.
include(${CMAKE_CURRENT_LIST_DIR}/common.cmake)
set(strict -Wall -Wextra -pedantic -Werror -fsyntax-only -I${SOURCE_DIR}/include)
file(MAKE_DIRECTORY ${WORK_DIR})

file(WRITE ${WORK_DIR}/alone.h "#include \"zetpxl.h\"\nint useOfHeader(ZetImage* image, BITMAPINFOHEADER* dib);
int useOfHeader(ZetImage* image, BITMAPINFOHEADER* dib) { return image->width + dib->biWidth; }\n")
foreach(own before after)
  set(declaration "struct tagBITMAPINFOHEADER { int biWidth; };\ntypedef struct tagBITMAPINFOHEADER BITMAPINFOHEADER;\n")
  set(text "#define ZETPXL_NO_BITMAPINFOHEADER\n")
  if(own STREQUAL "before")
    string(APPEND text "${declaration}#include \"alone.h\"\n")
  else()
    string(APPEND text "#include \"zetpxl.h\"\n${declaration}#include \"alone.h\"\n")
  endif()
  file(WRITE ${WORK_DIR}/own_${own}.h "${text}")
endforeach()

foreach(header alone own_before own_after)
  run(${C_COMPILER} -std=c11 ${strict} -x c ${WORK_DIR}/${header}.h)
  foreach(standard c++17 c++20)
    run(${CXX_COMPILER} -std=${standard} ${strict} -x c++ ${WORK_DIR}/${header}.h)
  endforeach()
endforeach()
