#include "tests/robustness/allocation.h"

#include <cstdlib>
#include <new>

namespace {

bool counting = false;
long asked = 0;
long live = 0;
allocation::TPlan plan;

bool IsRefused() {
  if (!counting) return false;
  const long place = asked++;
  return place == plan.nth || (plan.onward && plan.nth >= 0 && place > plan.nth);
}

void* Allocate(std::size_t size) {
  if (IsRefused()) return nullptr;
  void* const block = std::malloc(size == 0 ? 1 : size);
  if (block != nullptr) ++live;
  return block;
}

void Release(void* block) {
  if (block != nullptr) --live;
  std::free(block);
}

}  // namespace

namespace allocation {

long LiveBlocks() { return live; }

void Begin(TPlan chosen) {
  plan = chosen;
  asked = 0;
  counting = true;
}

long End() {
  counting = false;
  return asked;
}

TPause::TPause() : before_(counting) { counting = false; }
TPause::~TPause() { counting = before_; }

}  // namespace allocation

void* operator new(std::size_t size) {
  if (void* const block = Allocate(size)) return block;
  throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return Allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept { return Allocate(size); }
void operator delete(void* block) noexcept { Release(block); }
void operator delete[](void* block) noexcept { Release(block); }
void operator delete(void* block, std::size_t /*size*/) noexcept { Release(block); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { Release(block); }
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept { Release(block); }
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept { Release(block); }

// Named by the linker's --wrap option.
extern "C" {
void* __real_calloc(std::size_t count, std::size_t size);  // NOLINT(bugprone-reserved-identifier)
void* __wrap_calloc(std::size_t count, std::size_t size);  // NOLINT(bugprone-reserved-identifier)

void* __wrap_calloc(std::size_t count, std::size_t size) {  // NOLINT(bugprone-reserved-identifier)
  return IsRefused() ? nullptr : __real_calloc(count, size);
}
}
