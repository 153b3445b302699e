# Warnings, hardening, sanitizers and link rules that every target of the tree shares.

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

# What makes a fault in the code harder to turn into more than a crash. Sanitizers find the faults
# themselves, and some of these hide them.
check_pie_supported(LANGUAGES C CXX)
add_compile_options(-Werror=format-security)
if(VELHOST_HARDENING AND NOT VELHOST_SANITIZE)
  add_compile_options(-fstack-protector-strong)
  if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64|i[3-6]86")
    add_compile_options(-fcf-protection)
  endif()
  # The C library's checks need optimisation. A compiler may define the macro of its own accord.
  add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE>
                      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-D_FORTIFY_SOURCE=2>)
  # The C++ library's own checks of indices and iterators.
  add_compile_definitions($<$<COMPILE_LANGUAGE:CXX>:_GLIBCXX_ASSERTIONS>)
  add_link_options(-Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack)
endif()

if(VELHOST_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

# -z defs: a library that forgets to link what it uses fails at build time. Clang's sanitizers leave
# their runtime to the program, so there it cannot hold.
if(NOT (VELHOST_SANITIZE AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang"))
  set(CMAKE_SHARED_LINKER_FLAGS "${CMAKE_SHARED_LINKER_FLAGS} -Wl,-z,defs")
  set(CMAKE_MODULE_LINKER_FLAGS "${CMAKE_MODULE_LINKER_FLAGS} -Wl,-z,defs")
endif()
