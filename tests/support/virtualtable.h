// A class's virtual table as the Itanium C++ ABI lays it out: one code address a slot.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "tests/support/namespaces.h"

namespace tests {

/// The entry of a slot as a plain function that takes the object as its first argument: EntryAt<int(void*)>. It is not
/// made a pointer to a member: an entry may be a thunk at an odd address, which such a pointer would take for a place
/// in the table. The one place that takes an object's bytes for what the ABI says they are: a host that was built
/// apart calls by the number of the slot, which no expression of the language does.
template <typename TFunction, typename TObject>
TFunction* EntryAt(const TObject& object, std::size_t slot) {
  static_assert(std::is_polymorphic_v<TObject>);
  const std::uintptr_t* table = nullptr;
  std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
  return reinterpret_cast<TFunction*>(table[slot]);
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

}  // namespace tests
