# QWZ_BUILD_FUZZERS=ON: every target, the library included, is instrumented
# for libFuzzer's coverage feedback and built with AddressSanitizer and
# UndefinedBehaviorSanitizer, stopping at the first report. Needs clang.
if(QWZ_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "QWZ_BUILD_FUZZERS needs clang (configure with the `fuzz` preset)")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all
                      -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
