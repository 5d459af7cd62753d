# The target with the flags of every translation unit. Warnings are errors only where
# CMAKE_COMPILE_WARNING_AS_ERROR says so, as in continuous integration: a newer compiler or library may
# warn of more, and that must not keep a packager from building.
add_library(fernhollow_flags INTERFACE)
target_compile_features(fernhollow_flags INTERFACE cxx_std_20)
target_compile_options(
  fernhollow_flags
  INTERFACE -Wall
            -Wextra
            -Wpedantic
            -Wshadow
            -Wconversion
            -Wnon-virtual-dtor
            -Woverloaded-virtual
            -Wimplicit-fallthrough)
target_compile_definitions(
  fernhollow_flags INTERFACE QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII
                             QT_NO_FOREACH QT_DISABLE_DEPRECATED_BEFORE=0x060400)
target_include_directories(fernhollow_flags INTERFACE ${PROJECT_SOURCE_DIR}/Sources
                                                      ${PROJECT_SOURCE_DIR}/Sources/Fernhollow)

option(FERNHOLLOW_SANITIZE "Address and undefined-behaviour sanitizers" OFF)
if(FERNHOLLOW_SANITIZE)
  set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_compile_options(fernhollow_flags INTERFACE ${sanitizers})
  target_link_options(fernhollow_flags INTERFACE ${sanitizers})
endif()

option(FERNHOLLOW_SANITIZE_THREADS "Thread sanitizer" OFF)
if(FERNHOLLOW_SANITIZE_THREADS)
  target_compile_options(fernhollow_flags INTERFACE -fsanitize=thread -fno-omit-frame-pointer)
  target_link_options(fernhollow_flags INTERFACE -fsanitize=thread)
endif()

option(FERNHOLLOW_FUZZ "Build the fuzzers (scripts/fuzz); needs clang" OFF)
if(FERNHOLLOW_FUZZ)
  # All of our code reports which branches it takes, and a conversion that overflows is a finding.
  set(fuzzing -fsanitize=fuzzer-no-link,float-cast-overflow -fno-sanitize-recover=all)
  target_compile_options(fernhollow_flags INTERFACE ${fuzzing})
  target_compile_definitions(fernhollow_flags INTERFACE _GLIBCXX_ASSERTIONS)
  target_link_options(fernhollow_flags INTERFACE ${fuzzing})
endif()

# GCC 12 destroys by-value captures and aggregate temporaries inside a co_await expression twice.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  message(
    FATAL_ERROR
      "GCC ${CMAKE_CXX_COMPILER_VERSION} miscompiles C++20 coroutines (temporaries in co_await are destroyed twice). Use clang 19 (the presets do) or GCC 13 and later."
  )
endif()
