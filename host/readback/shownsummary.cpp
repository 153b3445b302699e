#include "host/readback/shownsummary.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "host/base/hosterror.h"
#include "host/base/names.h"
#include "host/base/text.h"
#include "host/meaning/field.h"
#include "host/output/planturns.h"

namespace velhost {

namespace {

using CollectorProfile::EPath;

// The number that the text is; -1 if it is not one.
int NumberIn(std::string_view text) {
  int number = -1;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  return result.ec == std::errc() && result.ptr == text.data() + text.size() ? number : -1;
}

// The bits that "5:4" names, whatever its numbering; a single one otherwise.
unsigned WidthOfBits(std::string_view bits) {
  const std::size_t colon = bits.find(':');
  if (colon == std::string_view::npos) return 1;
  return static_cast<unsigned>(std::abs(NumberIn(bits.substr(0, colon)) - NumberIn(bits.substr(colon + 1)))) + 1;
}

}  // namespace

TFinding FindingOf(const TReadFinding& read) {
  auto place = std::make_shared<TErrorRegister>();
  place->className = read.className;
  place->key = read.key;
  place->origin = read.origin;
  place->name = read.registerName;
  place->value = read.registerValue;
  place->isNarrow = read.isNarrow;
  place->unknown = read.unknown;
  for (const TReadEvidence& one : read.evidence) place->evidence.push_back({one.registerName, one.value, one.isNarrow});
  TFinding finding;
  finding.place = std::move(place);
  finding.bits = read.bits;
  finding.name = read.name;
  finding.value = read.value;
  finding.width = read.isWide ? std::max(WidthOfBits(read.bits), 33U) : WidthOfBits(read.bits);
  finding.text = read.text;
  finding.severity = read.severity;
  finding.isMasked = read.isMasked;
  finding.isFirst = read.isFirst;
  finding.isKnown = read.isKnown;
  return finding;
}

TShownSummary::TShownSummary(const std::string& path, const TReadResult& result)
    : path_(path), namespace_(TNamespace::Create()) {
  plan_.requests.emplace_back();
  for (const TReadUnread& read : result.unread) AddUnread(read);
  for (const TReadFailure& read : result.failed) AddFailure(read);
  MakeClasses();
  summary_.status = result.status;
  summary_.exitStatus = result.exitStatus;
  summary_.message = result.message;
  summary_.reasons = result.reasons;
  summary_.exchanges = result.exchanges;
  summary_.elapsedMs = result.elapsedMs;
  summary_.plan = &plan_;
  // The classes exist only now, and with them the keys.
  const TPlanTurns turns(&plan_);
  for (std::size_t i = 0; i < result.unread.size(); ++i) {
    const TUnread& unread = summary_.unread[i];
    const TOrigin origin = turns.Origin(unread.turn, unread.place);
    const TOrigin& read = result.unread[i].origin;
    const bool isSame = origin.path == read.path && origin.owner == read.owner && origin.chip == read.chip &&
                        origin.instance == read.instance;
    if (turns.Key(unread.turn, unread.place) == result.unread[i].key && isSame) continue;
    throw THostError(EFailure::kMalformed, SafeText(path_) + ": found the key " + Quoted(result.unread[i].key) +
                                               ", expected one that fits its class and origin");
  }
}

// "KROSG_A/node0/instance2#2"; the path is kNone if the place has another form.
TShownSummary::TKey TShownSummary::Parsed(const std::string& className, const std::string& key) const {
  TKey parsed;
  parsed.className = className;
  std::string_view rest = std::string_view(key).substr(key.find('/') + 1);
  if (const std::size_t sign = rest.rfind('#'); sign != std::string_view::npos) {
    parsed.time = static_cast<unsigned>(std::max(NumberIn(rest.substr(sign + 1)), 1));
    rest = rest.substr(0, sign);
  }
  const std::size_t slash = rest.find('/');
  const bool isBlock = rest.starts_with("sp");
  parsed.place.owner = NumberIn(rest.substr(isBlock ? 2 : 4, slash - (isBlock ? 2 : 4)));
  rest = rest.substr(slash + 1);
  const auto* const area = std::find(kCaptureAreas.begin(), kCaptureAreas.end(), rest);
  if (area != kCaptureAreas.end()) {
    parsed.path = EPath::kCapture;
    parsed.place.number = static_cast<int>(area - kCaptureAreas.begin());
  } else {
    parsed.path = isBlock ? EPath::kJfr : EPath::kR8;
    parsed.place.number = rest.starts_with("instance") ? NumberIn(rest.substr(8)) : -1;
  }
  if (parsed.place.owner >= 0 && parsed.place.number >= 0) return parsed;
  throw THostError(EFailure::kMalformed,
                   SafeText(path_) + ": found the key " + Quoted(key) + ", expected one such as CLASS/node0/instance0");
}

std::size_t TShownSummary::ClassAt(const std::string& className, EPath path) {
  const auto [known, isNew] = classes_.emplace(FoldName(className), plan_.classes.size());
  if (isNew) {
    plan_.classes.emplace_back().path = path;
    names_.push_back(className);
    registerNames_.emplace_back();
  }
  return known->second;
}

std::uint32_t TShownSummary::TurnAt(std::size_t planClass, unsigned time) {
  std::vector<TPlannedTurn>& turns = plan_.requests.front().turns;
  const auto [known, isNew] = turns_.emplace(std::pair(planClass, time), static_cast<std::uint32_t>(turns.size()));
  if (isNew) turns.push_back({.planClass = planClass, .time = time});
  return known->second;
}

std::int32_t TShownSummary::RegisterAt(std::size_t planClass, const std::string& property) {
  std::vector<std::string>& names = registerNames_[planClass];
  const auto isSame = [&property](const std::string& name) { return EqualNames(name, property); };
  const auto found = std::find_if(names.begin(), names.end(), isSame);
  if (found != names.end()) return static_cast<std::int32_t>(found - names.begin());
  names.push_back(property);
  return static_cast<std::int32_t>(names.size() - 1);
}

void TShownSummary::AddUnread(const TReadUnread& read) {
  const TKey key = Parsed(read.className, read.key);
  const std::size_t planClass = ClassAt(key.className, key.path);
  const std::uint32_t turn = TurnAt(planClass, key.time);
  if (read.origin.chip.value_or(0) != 0) plan_.classes[planClass].isBridge = true;
  summary_.unread.push_back({turn, key.place, read.code});
  if (read.code != EUnread::kBlockUnread) return;
  std::vector<std::uint32_t>& turns = unreadBlocks_[{planClass, key.place.owner}];
  if (turns.empty() || turns.back() != turn) turns.push_back(turn);
}

void TShownSummary::AddFailure(const TReadFailure& read) {
  const bool isDot = read.kind == EExchangeKind::kDot;
  const bool isPlaced = !isDot && !read.key.empty();
  TKey key;
  if (isPlaced) key = Parsed(read.className, read.key);
  const std::size_t planClass = ClassAt(read.className, isPlaced ? key.path : isDot ? EPath::kJfr : EPath::kR8);
  TExchangeFailure failure;
  failure.turn = TurnAt(planClass, key.time);
  if (isDot) {
    const auto& turns = unreadBlocks_[{planClass, read.owner}];
    const std::size_t number = dotFailures_[{planClass, read.owner}]++;
    if (number < turns.size()) failure.turn = turns[number];
  }
  failure.kind = read.kind;
  failure.isPlaced = isPlaced;
  failure.how = read.how;
  failure.owner = read.owner;
  failure.place = key.place;
  failure.address = read.address;
  if (isPlaced && read.kind == EExchangeKind::kRegister && !read.property.empty()) {
    failure.registerIndex = RegisterAt(planClass, read.property);
  }
  summary_.failed.push_back(failure);
}

void TShownSummary::MakeClasses() {
  for (std::size_t i = 0; i < plan_.classes.size(); ++i) {
    TClassDefinition definition;
    definition.name = names_[i];
    for (const std::string& name : registerNames_[i]) {
      TPropertyDefinition& property = definition.properties.emplace_back();
      property.name = name;
      property.type = TCIMValue::TCIMType::kUint8;
      property.isArray = true;
      plan_.classes[i].registers.emplace_back().property = definition.properties.size() - 1;
    }
    plan_.classes[i].cimClass = namespace_->AddClass(std::move(definition));
  }
}

}  // namespace velhost
