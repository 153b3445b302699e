# Warnings, hardening, sanitizers and link rules for all targets of the tree.

include(CheckPIESupported)

add_compile_options(
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wformat=2 -Wimplicit-fallthrough
  $<$<COMPILE_LANGUAGE:C>:-Wno-old-style-cast>)
if(VELHOST_WERROR)
  add_compile_options(-Werror)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  # A unique symbol would keep a library mapped after dlclose.
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique> -Wduplicated-cond -Wlogical-op)
endif()

if(VELHOST_SANITIZE)
  add_compile_options(-fsanitize=${VELHOST_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${VELHOST_SANITIZE})
  add_compile_definitions(VELHOST_SANITIZED=1)
endif()

# Hardening, which makes it difficult to turn a bug into more than a crash. Off with sanitizers, which detect
# the bugs themselves and are impeded by some of these options.
check_pie_supported(LANGUAGES C CXX)
add_compile_options(-Werror=format-security)
if(VELHOST_HARDENING AND NOT VELHOST_SANITIZE)
  add_compile_options(-fstack-protector-strong)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i[3-6]86")
    add_compile_options(-fcf-protection)
  endif()
  # The checks in the C library require optimisation. Some compilers predefine the macro.
  add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
                      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
  # The C++ library's checks of indices and iterators.
  add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
  add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()

if(VELHOST_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# -z defs: a library that does not link everything it uses fails to build. Not possible with Clang's
# sanitizers, whose runtime is in the program.
if(NOT (VELHOST_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang"))
  set(CMAKE_SHARED_LINKER_FLAGS "${CMAKE_SHARED_LINKER_FLAGS} -Wl,-z,defs")
  set(CMAKE_MODULE_LINKER_FLAGS "${CMAKE_MODULE_LINKER_FLAGS} -Wl,-z,defs")
endif()
