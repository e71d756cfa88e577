# QWZ_SANITIZE=ON: AddressSanitizer (with leak detection) and
# UndefinedBehaviorSanitizer for every target, stopping at the first report.
if(QWZ_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
