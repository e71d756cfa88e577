# Warnings for the project's own code, carried by an interface target.
add_library(qwz_warnings INTERFACE)
target_compile_options(qwz_warnings INTERFACE -Wall -Wextra $<$<BOOL:${QWZ_WERROR}>:-Werror>)
