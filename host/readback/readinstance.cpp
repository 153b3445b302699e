// One instance of a result.
#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "host/base/cimdatetime.h"
#include "host/base/digits.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/meaning/words.h"
#include "host/output/capturefiles.h"
#include "host/readback/readparts.h"
#include "host/readback/resultreader.h"

namespace velhost {

namespace {

using TType = TCIMValue::TCIMType;
using EKind = TJsonCursor::EKind;

constexpr std::uint64_t kAny64Bits = std::numeric_limits<std::uint64_t>::max();
constexpr std::uint64_t kLastIndex = 0xFFFF;

TCIMValue NumberValue(TJsonCursor& json) {
  const TJsonNumber number = json.Number("a number");
  if (!number.isInteger) return TCIMValue::FromReal(TType::kReal64, number.real);
  if (number.isNegative) return TCIMValue::FromInteger(TType::kSint64, ~number.magnitude + 1);
  return number.magnitude <= 0xFF ? TCIMValue(static_cast<unsigned char>(number.magnitude))
                                  : TCIMValue::FromInteger(TType::kUint64, number.magnitude);
}

unsigned int Decimal(std::string_view digits) {
  unsigned int number = 0;
  for (const char c : digits) number = number * 10 + static_cast<unsigned int>(c - '0');
  return number;
}

// A time is recognised by its form; it need not exist, because the service processor may have sent any.
std::optional<TCIMDateTime> MomentOf(const std::string& text) {
  if (text.size() != kCimDateTimeSize) return std::nullopt;
  if (text.find('*') != std::string::npos || text[kCimDateTimeSign] == ':') {
    return IsCimDateTime(text) ? std::optional(TCIMDateTime::FromString(text)) : std::nullopt;
  }
  std::string digits = text;
  digits[kCimDateTimePoint] = digits[kCimDateTimeSign] = '0';
  if (!std::all_of(digits.begin(), digits.end(), IsDigit)) return std::nullopt;
  const auto part = [&digits](std::size_t at, std::size_t size) {
    return Decimal(std::string_view(digits).substr(at, size));
  };
  const auto shortPart = [&part](std::size_t at, std::size_t size) {
    return static_cast<unsigned short>(part(at, size));
  };
  const int offset = static_cast<int>(part(kCimDateTimeSign + 1, 3));
  TCIMDateTime moment(shortPart(0, 4), shortPart(4, 2), part(6, 2), shortPart(8, 2), shortPart(10, 2), shortPart(12, 2),
                      part(kCimDateTimePoint + 1, 6),
                      static_cast<short>(text[kCimDateTimeSign] == '-' ? -offset : offset));
  return moment.ToString() == text ? std::optional(std::move(moment)) : std::nullopt;
}

TCIMValue TextValue(TJsonCursor& json) {
  const std::string text(json.Text("a string"));
  const auto moment = MomentOf(text);
  return moment ? TCIMValue(*moment) : TCIMValue(text);
}

TCIMValue ScalarValue(TJsonCursor& json) {
  switch (json.Kind()) {
    case EKind::kString: return TextValue(json);
    case EKind::kBoolean: return TCIMValue::FromInteger(TType::kBoolean, json.Boolean() ? 1 : 0);
    case EKind::kNull: json.Null(); return {};
    default: return NumberValue(json);
  }
}

// The narrowest type that holds both; kNone if no type does.
TType Widest(TType a, TType b) {
  const auto rank = [](TType type) {
    static constexpr std::array<TType::ECIMType, 5> kOrder = {TType::kNone, TType::kUint8, TType::kUint64,
                                                              TType::kSint64, TType::kReal64};
    return std::find(kOrder.begin(), kOrder.end(), type.GetCode()) - kOrder.begin();
  };
  if (a == b || b == TType::kNone) return a;
  if (a == TType::kNone) return b;
  constexpr auto kNotANumber = 5;
  if (rank(a) == kNotANumber || rank(b) == kNotANumber) return TType::kNone;
  return rank(a) > rank(b) ? a : b;
}

/// Reads instances of one text; counts what an instance holds, so that memory is bounded.
class TInstanceText {
 public:
  TInstanceText(TJsonCursor& json, EProperties kept, TReadInstance& instance)
      : json_(json), kept_(kept), instance_(instance) {}

  void Read(TLineIdentity* ofLine);

 private:
  void Member(std::string_view name, TLineIdentity* ofLine);
  void File();
  void Missing();
  TMissing OneMissing();
  void Properties();
  void Property(std::string name);
  TCIMValue Array();
  void Registers();
  TReadRegister Register(std::string name);
  void RegisterMember(std::string_view name, TReadRegister& one, std::vector<std::string>& bits);
  void Identification(TReadRegister& one);
  void Field(TReadRegister& one, std::vector<std::string>& bits);
  void Count();
  void CheckWhole(const TJsonObject& object) const;

  TJsonCursor& json_;
  EProperties kept_;
  TReadInstance& instance_;
  std::size_t count_ = 0;
};

void TInstanceText::Count() {
  if (++count_ > kMostReadValues) {
    json_.Fail("found an instance of more than " + std::to_string(kMostReadValues) +
               " values, expected at most that many");
  }
}

void TInstanceText::Read(TLineIdentity* ofLine) {
  static const std::vector<std::string_view> kMembers = {"kind",       "class",   "key",        "origin",   "file",
                                                         "incomplete", "missing", "properties", "registers"};
  static const std::vector<std::string_view> kLineMembers = {
      "kind", "class", "run_id", "labels", "key", "origin", "file", "incomplete", "missing", "properties", "registers"};
  instance_ = {};
  TJsonObject object(json_, ofLine != nullptr ? kLineMembers : kMembers, "an instance");
  for (auto name = object.Next(); !name.empty(); name = object.Next()) Member(name, ofLine);
  object.Require({"kind", "class", "key", "properties"});
  if (ofLine != nullptr) object.Require({"run_id", "labels"});
  CheckWhole(object);
}

void TInstanceText::Member(std::string_view name, TLineIdentity* ofLine) {
  if (name == "kind") {
    if (const std::string kind = ReadText(json_); kind != "instance")
      json_.Fail("found " + Quoted(kind) + ", expected \"instance\"");
  } else if (name == "class") {
    instance_.className = ReadText(json_);
  } else if (name == "run_id") {
    ofLine->runId = ReadText(json_);
  } else if (name == "labels") {
    ofLine->labels = ReadLabels(json_);
  } else if (name == "key") {
    instance_.facts.key = ReadKey(json_, true);
  } else if (name == "origin") {
    instance_.facts.origin = ReadOrigin(json_);
  } else if (name == "file") {
    File();
  } else if (name == "incomplete") {
    if (!json_.Boolean()) json_.Fail("found false, expected true");
  } else if (name == "missing") {
    Missing();
  } else if (name == "properties") {
    Properties();
  } else {
    Registers();
  }
}

void TInstanceText::CheckWhole(const TJsonObject& object) const {
  const std::string& key = instance_.facts.key;
  if (!EqualNames(std::string_view(key).substr(0, key.find('/')), instance_.className)) {
    json_.FailAt(object.Place(), "found the key " + Quoted(key) + " of an instance of " + Quoted(instance_.className) +
                                     ", expected a key that begins with the class");
  }
  if (object.Has("incomplete") != object.Has("missing")) {
    json_.FailAt(object.Place(), R"(found one of "incomplete" and "missing", expected both or neither)");
  }
}

void TInstanceText::File() {
  static const std::vector<std::string_view> kMembers = {"area", "reported_size", "received"};
  TJsonObject object(json_, kMembers, "a file");
  TFileFacts file;
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "area") {
      file.area = ReadText(json_);
    } else if (name == "reported_size") {
      file.reportedSize = static_cast<std::int32_t>(
          json_.Signed(std::numeric_limits<std::int32_t>::min(), std::numeric_limits<std::int32_t>::max()));
    } else {
      file.received = json_.Unsigned(0, kAny64Bits);
    }
  }
  object.Require({"area", "reported_size", "received"});
  instance_.facts.file = std::move(file);
}

void TInstanceText::Missing() {
  json_.EnterArray("an array of what is missing");
  while (json_.NextElement()) instance_.facts.missing.push_back(OneMissing());
  if (instance_.facts.missing.empty()) json_.Fail("found nothing in \"missing\", expected at least one entry");
}

TMissing TInstanceText::OneMissing() {
  static const std::vector<std::string_view> kMembers = [] {
    std::vector<std::string_view> names = {"property", "address", "addresses", "index", "offset"};
    names.insert(names.end(), kHowMembers.begin(), kHowMembers.end());
    return names;
  }();
  Count();
  TJsonObject object(json_, kMembers, "something missing");
  TMissing missing;
  THowReader how;
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (how.Take(json_, name)) continue;
    if (name == "property") {
      missing.property = ReadText(json_);
    } else if (name == "address") {
      missing.where.address = static_cast<std::uint32_t>(ReadHex(json_, {6}).value);
    } else if (name == "addresses") {
      std::vector<std::uint32_t>& addresses = missing.where.addresses.emplace();
      ReadList(json_, "an array of addresses",
               [&] { addresses.push_back(static_cast<std::uint32_t>(ReadHex(json_, {6}).value)); });
    } else if (name == "index") {
      missing.where.index = static_cast<std::uint16_t>(json_.Unsigned(0, kLastIndex));
    } else {
      missing.where.offset = json_.Unsigned(0, kAny64Bits);
    }
  }
  object.Require({"property"});
  missing.how = how.How(json_, object.Place());
  return missing;
}

void TInstanceText::Properties() {
  // Only capture files have a property that matters then.
  const auto& origin = instance_.facts.origin;
  const bool isOfFile = !origin || origin->path == CollectorProfile::EPath::kCapture;
  if (kept_ == EProperties::kCheckedBefore && !isOfFile) return json_.SkipChecked();
  std::set<std::string, std::less<>> names;
  std::string_view name;
  json_.EnterObject("an object of properties");
  while (json_.NextMember(name)) {
    Count();
    const bool isCompared = EqualNames(name, kCaptureDataProperty);
    if (kept_ != EProperties::kAll && !isCompared) {
      json_.Skip();
      continue;
    }
    if (!names.insert(FoldName(name)).second)
      json_.Fail("found a second " + Quoted(name) + ", expected each property once");
    Property(std::string(name));
  }
}

void TInstanceText::Property(std::string name) {
  const bool isArray = json_.Kind() == EKind::kArray;
  if (json_.Kind() == EKind::kObject) json_.Text("a string, number, boolean, null or an array of them");
  TCIMValue value = isArray ? Array() : ScalarValue(json_);
  instance_.properties.push_back({std::move(name), std::move(value)});
}

TCIMValue TInstanceText::Array() {
  json_.EnterArray("an array");
  TType type = TType::kNone;
  std::vector<TCIMValue> elements;
  while (json_.NextElement()) {
    Count();
    elements.push_back(ScalarValue(json_));
    const TType element = elements.back().GetType();
    const TType both = Widest(type, element);
    if (both == TType::kNone && (type != TType::kNone || element != TType::kNone)) {
      json_.Fail("found values of different types in an array, expected one type");
    }
    type = both;
  }
  TCIMValue array;
  array.Set(type == TType::kNone ? TType::kUint8 : type, 0, elements);
  return array;
}

void TInstanceText::Registers() {
  std::set<std::string, std::less<>> names;
  std::vector<TReadRegister>& registers = instance_.registers.emplace();
  std::string_view name;
  json_.EnterObject("an object of registers");
  while (json_.NextMember(name)) {
    Count();
    std::string own(name);
    if (!names.insert(FoldName(own)).second)
      json_.Fail("found a second " + Quoted(own) + ", expected each register once");
    registers.push_back(Register(std::move(own)));
  }
}

TReadRegister TInstanceText::Register(std::string name) {
  static const std::vector<std::string_view> kMembers = {
      "address", "index", "width", "value", "role", "unit", "numbering", "identification", "upper", "folded", "fields"};
  TJsonObject object(json_, kMembers, "a register");
  TReadRegister one;
  one.name = std::move(name);
  std::vector<std::string> bits;
  std::size_t digits = 0;
  for (auto member = object.Next(); !member.empty(); member = object.Next()) {
    if (member == "value") {
      const THexText value = ReadHex(json_, {8, 16});
      one.value = value.value;
      digits = value.digits;
    } else {
      RegisterMember(member, one, bits);
    }
  }
  object.Require({"width", "value"});
  if (object.Has("address") == object.Has("index")) {
    json_.FailAt(object.Place(), R"(found none or both of "address" and "index", expected one of them)");
  }
  if (digits * 4 != one.Width()) {
    json_.FailAt(object.Place(), "found a value of " + std::to_string(digits) + " digits, expected " +
                                     std::to_string(one.Width() / 4) + " by \"width\"");
  }
  for (std::size_t i = 0; i < bits.size(); ++i) {
    const auto known = BitsOf(bits[i], one.Width(), one.isMsb0);
    if (!known) {
      json_.FailAt(object.Place(), "found the bits " + Quoted(bits[i]) + ", expected N or HIGH:LOW inside " +
                                       std::to_string(one.Width()) + " bits");
    }
    one.fields[i].bits = *known;
  }
  return one;
}

void TInstanceText::RegisterMember(std::string_view name, TReadRegister& one, std::vector<std::string>& bits) {
  if (name == "address") {
    one.place = static_cast<std::uint32_t>(ReadHex(json_, {6}).value);
  } else if (name == "index") {
    one.isIndex = true;
    one.place = static_cast<std::uint32_t>(json_.Unsigned(0, kLastIndex));
  } else if (name == "width") {
    const std::uint64_t width = json_.Unsigned(32, 64);
    if (width != 32 && width != 64) json_.Fail("found " + std::to_string(width) + ", expected 32 or 64");
    one.isNarrow = width == 32;
  } else if (name == "role") {
    one.role = ReadWord(json_, ERole::kIdentity, &RoleName);
  } else if (name == "unit") {
    one.unit = ReadText(json_);
  } else if (name == "numbering") {
    if (const std::string word = ReadText(json_); word != "msb0")
      json_.Fail("found " + Quoted(word) + ", expected \"msb0\"");
    one.isMsb0 = true;
  } else if (name == "identification") {
    Identification(one);
  } else if (name == "upper") {
    one.upper = static_cast<std::uint32_t>(ReadHex(json_, {8}).value);
  } else if (name == "folded") {
    one.folded = static_cast<std::uint32_t>(ReadHex(json_, {8}).value);
  } else {
    json_.EnterArray("an array of fields");
    while (json_.NextElement()) Field(one, bits);
  }
}

void TInstanceText::Identification(TReadRegister& one) {
  const std::string text = ReadText(json_);
  const auto bytes = DecodeHexPairs(text);
  if (!bytes || bytes->size() != 3) json_.Fail("found " + Quoted(text) + ", expected three bytes such as 0B 00 54");
  one.identification = {(*bytes)[0], (*bytes)[1], (*bytes)[2]};
}

void TInstanceText::Field(TReadRegister& one, std::vector<std::string>& bits) {
  static const std::vector<std::string_view> kMembers = {"bits", "name", "value", "text"};
  Count();
  TJsonObject object(json_, kMembers, "a field");
  TReadField& field = one.fields.emplace_back();
  for (auto name = object.Next(); !name.empty(); name = object.Next()) {
    if (name == "bits") {
      bits.push_back(ReadText(json_));
    } else if (name == "name") {
      if (json_.Kind() != EKind::kNull)
        field.name = ReadText(json_);
      else
        json_.Null();
    } else if (name == "value") {
      field.value = ReadFieldValue(json_).value;
    } else {
      field.text = ReadText(json_);
    }
  }
  object.Require({"bits", "name", "value"});
}

}  // namespace

void ReadInstance(TJsonCursor& json, EProperties properties, TLineIdentity* ofLine, TReadInstance& instance) {
  TInstanceText(json, properties, instance).Read(ofLine);
}

std::optional<TBits> BitsOf(std::string_view text, unsigned width, bool isMsb0) {
  std::array<unsigned, 2> ends{};
  const std::size_t colon = text.find(':');
  std::size_t i = 0;
  for (const std::string_view part :
       {text.substr(0, colon), text.substr(colon == std::string_view::npos ? 0 : colon + 1)}) {
    if (part.empty() || part.size() > 2 || !std::all_of(part.begin(), part.end(), IsDigit)) return std::nullopt;
    for (const char c : part) ends.at(i) = ends.at(i) * 10 + static_cast<unsigned>(c - '0');
    if (ends.at(i) >= width) return std::nullopt;
    if (isMsb0) ends.at(i) = width - 1 - ends.at(i);
    ++i;
  }
  if (ends[0] < ends[1]) return std::nullopt;
  return TBits{ends[0], ends[1]};
}

}  // namespace velhost
