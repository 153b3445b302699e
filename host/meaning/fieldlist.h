// The fields of one register, from the elements of its "Fields".
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/meaning/classmeaning.h"
#include "host/meaning/fieldgrammar.h"

namespace velhost {

/// Takes the elements in order. Each is judged by the good ones before it: a bad one is as if it were not there.
class TFieldList {
 public:
  TFieldList(unsigned width, bool isMsb0) : width_(width), isMsb0_(isMsb0) {}

  /// Returns what is wrong with the element, if anything.
  std::optional<TFieldBreach> Add(std::string_view element);
  /// The fields from the least significant, with their texts from the smallest value. Call it once, at the end.
  std::vector<TFieldMeaning> Take();

 private:
  struct TText {
    std::uint64_t last = 0;
    std::string text;
  };
  struct TDraft {
    TBits bits;
    bool isHex = false;
    std::string name;
    std::map<std::uint64_t, TText> texts;  // by the first value of each
  };

  std::optional<TFieldBreach> AddField(const TFieldElement& element, TBits bits);
  std::optional<TFieldBreach> AddText(const TFieldElement& element, TBits bits);

  unsigned width_;
  bool isMsb0_;
  std::vector<TDraft> fields_;  // at most as many as the register has bits
};

}  // namespace velhost
