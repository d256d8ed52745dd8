# One INTERFACE target carries the warnings and the Qt defines for everything of ours.
add_library(common INTERFACE)
target_compile_options(common INTERFACE
  -Wall -Wextra -pedantic -Wold-style-cast -Wnon-virtual-dtor -Woverloaded-virtual -Wshadow)
target_compile_definitions(common INTERFACE
  QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_STRICT_ITERATORS QT_USE_QSTRINGBUILDER
  QT_NO_NARROWING_CONVERSIONS_IN_CONNECT QT_DEPRECATED_WARNINGS QT_DISABLE_DEPRECATED_BEFORE=0x050900)
if(WARNINGS_AS_ERRORS)
  target_compile_options(common INTERFACE -Werror)
endif()

# SANITIZE is a list for -fsanitize=, for example "address,undefined".
if(SANITIZE)
  add_compile_options(-fsanitize=${SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=undefined)
  add_link_options(-fsanitize=${SANITIZE})
endif()
