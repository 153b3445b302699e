// A library for LD_PRELOAD that refuses memory to a whole program:
//
//   REFUSE_NTH=n       operator new refuses its nth allocation, counted from 0
//   REFUSE_ONWARD=1    and all later ones
//   REFUSE_COUNT=FILE  writes the number of allocations to the file
//
// Allocations before main do not count: nothing could report their failure.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#define EXPORTED __attribute__((visibility("default")))

namespace {

using TMain = int (*)(int, char**, char**);

TMain programMain = nullptr;
bool hasStarted = false;
long asked = 0;

int StartMain(int argc, char** argv, char** environment) {
  hasStarted = true;
  return programMain(argc, argv, environment);
}

long Number(const char* variable, long otherwise) {
  const char* const text = std::getenv(variable);
  return text == nullptr ? otherwise : std::atol(text);
}

void* Allocate(std::size_t size) {
  static const long nth = Number("REFUSE_NTH", -1);
  static const bool onward = Number("REFUSE_ONWARD", 0) != 0;
  const long place = hasStarted ? asked++ : -1;
  if (place >= 0 && nth >= 0 && (place == nth || (onward && place > nth))) return nullptr;
  return std::malloc(size == 0 ? 1 : size);
}

__attribute__((destructor)) void WriteCount() {
  const char* const path = std::getenv("REFUSE_COUNT");
  if (path == nullptr) return;
  if (std::FILE* const file = std::fopen(path, "w")) {
    std::fprintf(file, "%ld\n", asked);
    std::fclose(file);
  }
}

}  // namespace

// Overrides the C library's own function, which calls main.
extern "C" EXPORTED int __libc_start_main(TMain main, int argc, char** argv, void (*init)(), void (*fini)(),
                                          void (*loaderFini)(), void* stackEnd) {
  using TStart = int (*)(TMain, int, char**, void (*)(), void (*)(), void (*)(), void*);
  programMain = main;
  const auto start = reinterpret_cast<TStart>(dlsym(RTLD_NEXT, "__libc_start_main"));
  return start(&StartMain, argc, argv, init, fini, loaderFini, stackEnd);
}

EXPORTED void* operator new(std::size_t size) {
  if (void* const block = Allocate(size)) return block;
  throw std::bad_alloc();
}
EXPORTED void* operator new[](std::size_t size) { return operator new(size); }
EXPORTED void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return Allocate(size); }
EXPORTED void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return Allocate(size); }
EXPORTED void operator delete(void* block) noexcept { std::free(block); }
EXPORTED void operator delete[](void* block) noexcept { std::free(block); }
EXPORTED void operator delete(void* block, std::size_t /*size*/) noexcept { std::free(block); }
EXPORTED void operator delete[](void* block, std::size_t /*size*/) noexcept { std::free(block); }
