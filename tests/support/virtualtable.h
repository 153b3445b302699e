// A class's virtual table as the Itanium C++ ABI lays it out: one code address per slot.
#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "tests/support/namespaces.h"

namespace tests {

/// The entry of a slot as a plain function that takes the object as its first argument: EntryAt<int(void*)>. It is
/// not a pointer to member: an entry may be a thunk at an odd address, which such a pointer would take for an offset
/// into the table. This is the only place that interprets an object's bytes by the ABI: a separately built host calls
/// by slot number, which the language cannot express.
template <typename TFunction, typename TObject>
TFunction* EntryAt(const TObject& object, std::size_t slot) {
  static_assert(std::is_polymorphic_v<TObject>);
  const std::uintptr_t* table = nullptr;
  std::memcpy(&table, static_cast<const void*>(&object), sizeof table);
  return reinterpret_cast<TFunction*>(table[slot]);
}

/// The slot of a virtual function. A pointer to a virtual member function is 1 + its offset in the table, and an
/// adjustment of `this`.
template <typename TMember>
std::size_t SlotOf(TMember member) {
  std::uintptr_t function = 0;
  static_assert(sizeof member == 2 * sizeof function);
  std::memcpy(&function, &member, sizeof function);
  return (function - 1) / sizeof(void*);
}

/// The number of slots in the table of `TBase`, which is the slot of the first virtual function that a derived class
/// adds.
template <typename TBase>
std::size_t SlotsOf() {
  class TBelow : public TBase {
   public:
    virtual void Next() {}
  };
  return SlotOf(&TBelow::Next);
}

}  // namespace tests
