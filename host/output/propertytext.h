// The properties of an instance in words, as the table shows them.
#pragma once

#include <string>
#include <vector>

#include "host/model/ciminstance.h"
#include "host/output/capturefiles.h"
#include "host/output/tablelayout.h"
#include "host/result/instancefacts.h"

namespace velhost {

/// A property of an instance as safe text.
struct TPropertyText {
  std::string name;
  std::string text;
  std::vector<std::string> fields = {};  ///< of a register, in words
  EEmphasis emphasis = EEmphasis::kNone;
  bool isCapture = false;  ///< the bytes of a capture file: the text only says how many there are
};

/// The properties that are set or missing, in the order of the class.
///
/// A register has its address or index, and its value: 0xABCDEF  0x00000100. It is
/// dim if it is zero, and has the colour of its worst finding that is not masked. What is missing has the reason in
/// place of a value, even if the collector has filled it with something. A time of day without a date, which is what R8
/// classes have, is shown as such; other datetimes are in ISO 8601. Arrays are elements separated by commas.
/// `capture` is the capture file in the instance; null if there is none.
std::vector<TPropertyText> PropertyTexts(const TInstance& instance, const TInstanceFacts& facts,
                                         const TCaptureFile* capture);

}  // namespace velhost
