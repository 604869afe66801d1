# Compile flags of the library. Results are defined to the bit, so nothing here may let the compiler reorder or fuse
# floating-point arithmetic; not raising errno and not trapping change no result and let loops be vectorised.
add_library(zetpxl_flags INTERFACE)
target_compile_options(zetpxl_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-align
  -ffp-contract=off -fno-math-errno -fno-trapping-math
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti>
  # ivdep speaks to g++ alone.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-unknown-pragmas>
  $<$<BOOL:${ZETPXL_WARNINGS_AS_ERRORS}>:-Werror>)
# Flags of the programs around the library. g++ 12 sees an overlap in std::string that cannot be.
add_library(zetpxl_program_flags INTERFACE)
target_compile_options(zetpxl_program_flags INTERFACE
  -Wall -Wextra -ffp-contract=off
  $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>
  $<$<BOOL:${ZETPXL_WARNINGS_AS_ERRORS}>:-Werror>)

set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
set(CMAKE_C_FLAGS_RELEASE "-O3 -DNDEBUG")
