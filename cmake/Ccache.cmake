# Where ccache is installed, nothing is compiled twice. These settings leave the headers' paths and times out
# of the comparison, so that a second checkout and precompiled headers profit, too.
find_program(FERNHOLLOW_CCACHE ccache)
if(FERNHOLLOW_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER
      ${CMAKE_COMMAND} -E env CCACHE_BASEDIR=${PROJECT_SOURCE_DIR} CCACHE_NOHASHDIR=1
      CCACHE_SLOPPINESS=pch_defines,time_macros ${FERNHOLLOW_CCACHE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options("SHELL:-Xclang -fno-pch-timestamp")
  endif()
endif()
