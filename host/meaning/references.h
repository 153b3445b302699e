// The qualifiers that say more of an errors register, most of them by naming other registers of the class.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "host/meaning/classmeaning.h"
#include "host/meaning/qualifierreader.h"
#include "host/model/cimclass.h"

namespace velhost {

/// Notes each of these qualifiers on a register of another role, on which it has no effect.
void NoteWithoutEffect(const TQualifierReader& qualifiers, ERole role);

class TReferences {
 public:
  /// Nothing is owned. In `meaning`, width and numbering of all registers are known.
  TReferences(const TCIMClass& cimClass, TClassMeaning& meaning) : class_(cimClass), meaning_(meaning) {}

  /// Reads them for one errors register.
  void Resolve(std::size_t registerIndex, const TQualifierReader& qualifiers);

 private:
  const std::string& NameOf(std::size_t registerIndex) const;
  std::optional<std::size_t> Find(std::string_view name) const;
  std::optional<std::size_t> FindNamed(const TQualifierReader& qualifiers, const TQualifierText& text,
                                       std::string_view name) const;
  std::string HintFor(const TQualifierText& text, std::string_view name) const;
  std::optional<std::size_t> Companion(const TQualifierReader& qualifiers, std::string_view qualifier,
                                       unsigned width) const;
  std::optional<TFirstErrorPlace> FirstError(const TQualifierReader& qualifiers) const;
  void ReadEvidence(const TQualifierReader& qualifiers, TRegisterMeaning& errors) const;

  const TCIMClass& class_;
  TClassMeaning& meaning_;
};

}  // namespace velhost
