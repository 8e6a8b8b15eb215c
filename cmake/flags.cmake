# How everything that is our own is compiled: link kqsupt_flags for programs, and
# kqsupt_library_flags too for what goes into a shared library.

set(KQSUPT_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize= takes them")
option(KQSUPT_COVERAGE "Count what is reached in the library" OFF)
option(KQSUPT_FUZZ "Build the library and the fuzz targets for libFuzzer, and nothing else" OFF)

add_library(kqsupt_flags INTERFACE)
# What is counted is what the sources say: little of it is moved or merged.
target_compile_options(kqsupt_flags INTERFACE $<IF:$<BOOL:${KQSUPT_COVERAGE}>,-Og,-O2> -g
  -fstack-protector-strong)
target_compile_definitions(kqsupt_flags INTERFACE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
target_link_options(kqsupt_flags INTERFACE -Wl,-z,relro,-z,now)

add_library(kqsupt_library_flags INTERFACE)
target_link_libraries(kqsupt_library_flags INTERFACE kqsupt_flags)
target_compile_options(kqsupt_library_flags INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions -fno-rtti> -fPIC -fvisibility=hidden
  $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden>)
target_link_options(kqsupt_library_flags INTERFACE -static-libstdc++ -static-libgcc)

if(KQSUPT_FUZZ)
  # Another compiler, whose warnings differ: which ones count is told by the other presets. What the
  # instrumented library calls of libFuzzer and the sanitizers is in the programs that load it.
  add_compile_options(-fsanitize=fuzzer-no-link)
else()
  target_compile_options(kqsupt_flags INTERFACE -Wall -Wextra -Wshadow -Wconversion -Werror)
  target_link_options(kqsupt_library_flags INTERFACE -Wl,-z,defs,--no-undefined)
endif()

if(KQSUPT_COVERAGE)
  # Atomic counts: several threads and processes add to them. A process that is killed adds nothing.
  target_compile_options(kqsupt_library_flags INTERFACE --coverage -fprofile-update=atomic)
  target_link_options(kqsupt_library_flags INTERFACE --coverage)
  # The counting sets off this warning where nothing is wrong.
  target_compile_options(kqsupt_flags INTERFACE -Wno-maybe-uninitialized)
endif()

if(KQSUPT_SANITIZE)
  # Also what is not ours (GoogleTest), so that containers are annotated the same everywhere.
  # Objects without run-time type information cannot be checked for their type.
  add_compile_options(-fsanitize=${KQSUPT_SANITIZE} -fno-sanitize=vptr
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${KQSUPT_SANITIZE})
  if(NOT KQSUPT_FUZZ)
    # The instrumented standard library sets off this warning where nothing is wrong.
    target_compile_options(kqsupt_flags INTERFACE -Wno-maybe-uninitialized)
  endif()
else()
  # The fortified calls hide from the address sanitizer what they copy.
  target_compile_options(kqsupt_flags INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
endif()
