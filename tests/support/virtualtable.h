// A class's virtual table as the Itanium C++ ABI lays it out: one code address a slot.
#pragma once

#include <cstdint>
#include <cstring>

namespace testsupport {

/// The entry of a slot as a plain function that takes the object as its first argument: EntryAt<int(void*)>. It is not
/// made a pointer to a member: an entry may be a thunk at an odd address, which such a pointer would take for a place
/// in the table.
template <typename TFunction>
TFunction* EntryAt(const void* table, std::size_t slot) {
  return reinterpret_cast<TFunction*>(static_cast<const std::uintptr_t*>(table)[slot]);
}

/// The slot of a virtual operation. A pointer to it is 1 + its offset in the table, and an adjustment of `this`.
template <typename TMember>
std::size_t SlotOf(TMember member) {
  std::uintptr_t function = 0;
  static_assert(sizeof member == 2 * sizeof function);
  std::memcpy(&function, &member, sizeof function);
  return (function - 1) / sizeof(void*);
}

/// How many slots the table of `TBase` has: where the first virtual operation of a class below it goes.
template <typename TBase>
std::size_t SlotsOf() {
  class TBelow : public TBase {
   public:
    virtual void Next() {}
  };
  return SlotOf(&TBelow::Next);
}

}  // namespace testsupport
