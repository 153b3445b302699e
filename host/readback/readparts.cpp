#include "host/readback/readparts.h"

#include <algorithm>
#include <limits>

#include "host/base/digits.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/output/planturns.h"
#include "host/readback/resultreader.h"

namespace velhost {

namespace {

constexpr int kAnyInt = std::numeric_limits<int>::max();
constexpr std::uint64_t kAny32Bits = std::numeric_limits<std::uint32_t>::max();
constexpr int kMostChips = 255;

std::optional<std::uint64_t> HexNumber(std::string_view digits) {
  std::uint64_t number = 0;
  for (const char c : digits) {
    const int digit = c >= 'a' ? -1 : HexDigitValue(c);
    if (digit < 0) return std::nullopt;
    number = number << 4U | static_cast<std::uint64_t>(digit);
  }
  return number;
}

// Takes digits; false if there are none.
bool TakeNumber(std::string_view& text) {
  const std::string_view before = text;
  while (!text.empty() && IsDigit(text.front())) text.remove_prefix(1);
  return text.size() < before.size();
}

bool TakeWord(std::string_view& text, std::string_view word) {
  if (!text.starts_with(word)) return false;
  text.remove_prefix(word.size());
  return true;
}

// "node0/instance2", "node0/cpu_err"
bool IsPlace(std::string_view place) {
  const bool hasOwner = TakeWord(place, "node") || TakeWord(place, "sp");
  return hasOwner && TakeNumber(place) && TakeWord(place, "/") && !place.empty();
}

bool IsUnknownPlace(std::string_view place) {
  return TakeWord(place, "?") && !place.starts_with('0') && TakeNumber(place) && place.empty();
}

}  // namespace

THexText ReadHex(TJsonCursor& json, std::initializer_list<std::size_t> sizes) {
  const std::string_view text = json.Text("hexadecimal text");
  const std::string_view digits = text.substr(std::min<std::size_t>(2, text.size()));
  const bool hasSize = std::find(sizes.begin(), sizes.end(), digits.size()) != sizes.end();
  const auto number = hasSize && text.starts_with("0x") ? HexNumber(digits) : std::nullopt;
  if (number) return {*number, digits.size()};
  std::vector<std::string> counts;
  for (const std::size_t size : sizes) counts.push_back(std::to_string(size));
  json.Fail("found " + Quoted(text) + ", expected 0x and " + Listed(counts, " or ") + " digits from 0 to 9 and A to F");
}

std::string ReadText(TJsonCursor& json) { return std::string(json.Text("a string")); }

std::vector<std::string> ReadTexts(TJsonCursor& json) {
  std::vector<std::string> texts;
  ReadList(json, "an array of strings", [&] { texts.push_back(ReadText(json)); });
  return texts;
}

std::map<std::string, std::string> ReadLabels(TJsonCursor& json) {
  std::map<std::string, std::string> labels;
  std::string_view name;
  json.EnterObject("an object of strings");
  while (json.NextMember(name)) {
    const std::string key(name);
    if (labels.count(key) != 0) json.Fail("found a second " + Quoted(key) + ", expected each member once");
    labels[key] = ReadText(json);
    CheckEntries(json, labels.size());
  }
  return labels;
}

void CheckEntries(const TJsonCursor& json, std::size_t count) {
  if (count <= kMostReadEntries) return;
  json.Fail("found a list of more than " + std::to_string(kMostReadEntries) + " entries, expected at most that many");
}

void FailAtWord(const TJsonCursor& json, std::string_view word, const std::vector<std::string_view>& words) {
  json.Fail("found " + Quoted(word) + ", expected one of " + Listed(words, ", ") +
            Suggestion(NearestName(word, words), "\""));
}

std::string ReadKey(TJsonCursor& json, bool mayBeUnknown) {
  std::string key(json.Text("a key"));
  const std::size_t slash = key.find('/');
  const std::string_view place = std::string_view(key).substr(std::min(slash, key.size() - 1) + 1);
  const bool isKey =
      slash != std::string::npos && slash > 0 && (IsPlace(place) || (mayBeUnknown && IsUnknownPlace(place)));
  if (!isKey) json.Fail("found " + Quoted(key) + ", expected a key such as CLASS/node0/instance0");
  return key;
}

bool HasUnknownPlace(std::string_view key) { return key.substr(key.find('/') + 1).starts_with('?'); }

TOrigin ReadOrigin(TJsonCursor& json) {
  using CollectorProfile::EPath;
  static const std::vector<std::string_view> kMembers = {"path", "service_processor", "node",
                                                         "chip", "instance",          "time_raw"};
  TJsonObject object(json, kMembers, "an origin");
  TOrigin origin;
  const auto number = [&json](int most) { return static_cast<int>(json.Signed(0, most)); };
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "path") {
      const std::string path = ReadText(json);
      for (const EPath known : {EPath::kR8, EPath::kJfr, EPath::kCapture}) {
        if (path == NameOfOriginPath(known)) origin.path = known;
      }
      if (origin.path == EPath::kNone) json.Fail("found " + Quoted(path) + ", expected one of r8, jfr, ffdc");
    } else if (name == "chip") {
      origin.chip = number(kMostChips);
    } else if (name == "instance") {
      origin.instance = number(kAnyInt);
    } else if (name == "time_raw") {
      origin.timeRaw = ReadText(json);
    } else {
      origin.owner = number(kAnyInt);
    }
  }
  object.Require({"path", origin.path == EPath::kJfr ? "service_processor" : "node"});
  if (object.Has("node") && object.Has("service_processor")) {
    json.FailAt(object.Place(), "found both a node and a service processor, expected one of them");
  }
  return origin;
}

TFieldValue ReadFieldValue(TJsonCursor& json) {
  if (json.Kind() == TJsonCursor::EKind::kNumber) return {json.Unsigned(0, kAny32Bits), false};
  const THexText text = ReadHex(json, {8, 16});
  return {text.value, true};
}

bool THowReader::Take(TJsonCursor& json, std::string_view name) {
  const auto* const found = std::find(kHowMembers.begin(), kHowMembers.end(), name);
  if (found == kHowMembers.end()) return false;
  static constexpr std::array<EHow, kHowMembers.size()> kHows = {
      EHow::kCompletionCode, EHow::kLost, EHow::kShort, EHow::kNotSent, EHow::kNotRecorded, EHow::kAnswered};
  ++count_;
  how_ = {kHows.at(static_cast<std::size_t>(found - kHowMembers.begin())), 0};
  if (how_.how == EHow::kLost || how_.how == EHow::kNotSent || how_.how == EHow::kNotRecorded) {
    if (!json.Boolean()) json.Fail("found false, expected true");
  } else {
    const bool isCode = how_.how == EHow::kCompletionCode;
    how_.number = static_cast<std::uint32_t>(json.Unsigned(isCode ? 1 : 0, isCode ? 0xFF : kAny32Bits));
  }
  return true;
}

THow THowReader::How(const TJsonCursor& json, const TJsonPlace& place) const {
  if (count_ != 1) {
    json.FailAt(place, "found " + std::string(count_ == 0 ? "none" : "several") + " of " + Listed(kHowMembers, ", ") +
                           ", expected exactly one");
  }
  return how_;
}

}  // namespace velhost
