#include "tests/result/followedrun.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace tests {

namespace {

constexpr std::array<const char*, 12> kReasons = {
    "stopped",      "session-lost", "request-failed",    "register-unread", "time-unread",   "file-unread",
    "block-unread", "block-short",  "block-undecodable", "not-served",      "not-collected", "nothing-read"};
constexpr std::array<const char*, 6> kUnread = {"absent",       "register-unread",   "file-unread",
                                                "block-unread", "block-undecodable", "discarded"};
constexpr std::array<const char*, 6> kHow = {"code", "lost", "short", "not sent", "not recorded", "answered"};

std::string Hex(std::uint64_t value, int digits) {
  std::array<char, 20> text{};
  std::snprintf(text.data(), text.size(), "%0*llX", digits, static_cast<unsigned long long>(value));
  return text.data();
}

// Without what most names have in common.
std::string Short(std::string text) {
  for (const std::string part : {"KROSG_", "_StatisticData"}) {
    const std::size_t at = text.find(part);
    if (at != std::string::npos) text.erase(at, part.size());
  }
  return text;
}

std::string Text(const THow& how) {
  const std::string word = kHow.at(static_cast<std::size_t>(how.how));
  const bool isCounted = how.how == EHow::kCompletionCode || how.how == EHow::kShort || how.how == EHow::kAnswered;
  return isCounted ? word + " " + std::to_string(how.number) : word;
}

std::string Text(const TWhere& where) {
  if (where.address) return " " + Hex(*where.address, 6);
  if (where.index) return " index " + std::to_string(*where.index);
  if (where.offset) return " offset " + std::to_string(*where.offset);
  std::string text;
  for (const std::uint32_t address : where.addresses.value_or(std::vector<std::uint32_t>())) {
    text += " " + Hex(address, 6);
  }
  return text;
}

std::string Text(const TRegisterFacts& facts, const TInstance& instance) {
  std::string text = ", " + instance.Class().Properties()[facts.property]->Definition().name + " ";
  text += facts.isIndex ? "index " + std::to_string(facts.place) : Hex(facts.place, 6);
  text += " = " + Hex(facts.value, facts.isNarrow ? 8 : 16);
  if (facts.upper) text += " upper " + Hex(*facts.upper, 8);
  if (facts.folded) text += " folded " + Hex(*facts.folded, 8);
  if (facts.identification) {
    text += " id";
    for (const std::uint8_t byte : *facts.identification) text += " " + Hex(byte, 2);
  }
  return text;
}

std::string PlaceText(const TOrigin& origin) {
  std::string text;
  if (origin.chip) text += ", chip " + std::to_string(*origin.chip);
  if (!origin.timeRaw.empty()) text += ", time " + origin.timeRaw;
  return text;
}

std::string FailureText(const TExchangeFailure& failure, const TPlannedClass& planned, unsigned time) {
  std::string text = "failed " + std::string(NameOfKind(failure.kind));
  if (failure.registerIndex >= 0) {
    const auto property = planned.registers.at(static_cast<std::size_t>(failure.registerIndex)).property;
    text += " " + planned.cimClass->Properties()[property]->Definition().name;
  }
  if (failure.address) text += " " + Hex(*failure.address, 6);
  text += failure.kind == EExchangeKind::kDot ? " sp" : " node";
  text += std::to_string(failure.owner);
  if (failure.isPlaced) text += " " + Short(KeyOf(planned, time, failure.place));
  text += ": " + Text(failure.how);
  return failure.repeat == 1 ? text : text + " x" + std::to_string(failure.repeat);
}

}  // namespace

std::string Shown(const TInstanceFacts& facts, const TInstance& instance) {
  std::string text = Short(facts.key);
  if (facts.origin) text += PlaceText(*facts.origin);
  if (facts.file) {
    text += ", " + facts.file->area + " " + std::to_string(facts.file->received) + " of " +
            std::to_string(facts.file->reportedSize);
  }
  if (facts.registers) {
    for (const TRegisterFacts& one : *facts.registers) text += Text(one, instance);
  }
  for (const TMissing& missing : facts.missing) {
    text += "; missing " + missing.property + Text(missing.where) + " " + Text(missing.how);
  }
  for (const TFinding& finding : facts.findings) {
    text += "; found " + finding.place->name + " " + finding.bits;
    for (const std::string& name : finding.place->unknown) text += " without " + name;
  }
  return facts.isCut ? text + "; cut" : text;
}

TFollowedRun::TFollowedRun() : schema_(TNamespace::Create()) {
  Add(TClassBuilder("Top").Identification());
  Add(TClassBuilder("Chipset", "Top"));
  for (const std::string_view base : CollectorProfile::kJfrBaseClasses) {
    Add(TClassBuilder(std::string(base), "Chipset"));
  }
}

TClassBuilder TFollowedRun::Class(const std::string& name, std::uint16_t instances) {
  const std::string super = name == kBlockClass ? "KROSG_MEMCTL_StatisticData" : "Chipset";
  return TClassBuilder(name, super).Machines({"6203"}).MaxInstances(instances);
}

void TFollowedRun::Plans(const std::vector<std::vector<std::string>>& requests) {
  std::vector<std::vector<TAskedClass>> asked;
  for (const auto& names : requests) {
    asked.emplace_back();
    for (const std::string& name : names) asked.back().push_back({schema_->FindClass(name), true});
  }
  // A class with this property stands for one that the schema check has an error for.
  const auto isCollectable = [](const TCIMClass& cimClass) {
    return cimClass.FindProperty("Bad") == cimClass.Properties().size();
  };
  plan_ = MakePlan({*schema_, "6203", server, asked, isCollector, isCollectable});
  reasons_ = std::make_unique<TResultReasons>(plan_);
  follower_ = std::make_unique<TPlanFollower>(plan_, *reasons_);
  if (!requests.empty()) Begins(0);
}

void TFollowedRun::Means(const std::string& className, TClassMeaning meaning) {
  for (TPlannedClass& planned : plan_.classes) {
    if (planned.cimClass->Name() != className) continue;
    for (std::size_t i = 0; i < planned.registers.size(); ++i) {
      meaning.registers.at(i).property = planned.registers[i].property;
    }
    planned.meaning = std::make_shared<const TClassMeaning>(meaning);
  }
}

void TFollowedRun::See(const TStep& step, bool isAttempted) {
  using std::chrono::microseconds;
  const ENoAnswer why = isAttempted ? noAnswer : ENoAnswer::kNotSent;
  if (step.isDot) {
    const dotCmd command(step.request.at(0), 2, static_cast<int>(step.request.size()) - 3, step.request.data() + 1,
                         step.request.data() + 3);
    const TDotRequest request = {step.target, command, 4096};
    const TDotAnswer answer = {step.data, step.length, false};
    follower_->OnDot({request, step.answered ? &answer : nullptr, microseconds(0), why});
    return;
  }
  wire::TCommandBuffer buffer;
  std::copy(step.request.begin(), step.request.end(), buffer.Data());
  const TIpmiRequest request(step.target, buffer);
  const TIpmiAnswer answer = {step.completionCode, step.data, step.dataLength, step.length};
  follower_->OnIpmi({request, step.answered ? &answer : nullptr, microseconds(0), why});
}

TInstance TFollowedRun::Filled(const std::string& name, const std::map<std::string, TBytes>& registers) const {
  TInstance instance(schema_->FindClass(name), schema_);
  for (const auto& [property, bytes] : registers) {
    const std::vector<TCIMValue> elements(bytes.begin(), bytes.end());
    instance.SetProperty(property, TCIMValue(TType::kUint8, 14, elements), {});
  }
  return instance;
}

std::string TFollowedRun::Commits(const std::string& name, const std::map<std::string, TBytes>& registers) {
  const TInstance instance = Filled(name, registers);
  return Shown(follower_->OnCommit(instance), instance);
}

std::vector<std::string> TFollowedRun::Ends(const std::string& exception) {
  follower_->EndRequest(exception);
  summary_ = reasons_->Close(std::nullopt);
  std::vector<TPlannedTurn> turns;
  for (const TPlannedRequest& request : plan_.requests) {
    turns.insert(turns.end(), request.turns.begin(), request.turns.end());
  }
  std::vector<std::string> lines = {std::to_string(summary_.exchanges) + " exchanges"};
  for (const TExchangeFailure& failure : summary_.failed) {
    const TPlannedTurn& turn = turns.at(failure.turn);
    lines.push_back(FailureText(failure, plan_.ClassOf(turn), turn.time));
  }
  for (const TUnread& unread : summary_.unread) {
    const TPlannedTurn& turn = turns.at(unread.turn);
    lines.push_back("unread " + Short(KeyOf(plan_.ClassOf(turn), turn.time, unread.place)) + " " +
                    kUnread.at(static_cast<std::size_t>(unread.code)));
  }
  for (const TReason& reason : summary_.reasons) {
    const std::string about = reason.className.empty() ? "" : Short(reason.className) + " ";
    lines.push_back("reason " + about + kReasons.at(static_cast<std::size_t>(reason.code)) + " " +
                    std::to_string(reason.count));
  }
  return lines;
}

std::string TFollowedRun::MessageOf(EReason code, const std::string& className) const {
  for (const TReason& reason : summary_.reasons) {
    if (reason.code == code && (className.empty() || reason.className == className)) return reason.message;
  }
  return {};
}

}  // namespace tests
