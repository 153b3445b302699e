#include "host/bmc/sim/faults.h"

#include <algorithm>
#include <array>
#include <limits>
#include <memory>
#include <string>
#include <string_view>

#include "host/base/names.h"
#include "host/base/text.h"
#include "host/bmc/sim/simulatedserver.h"
#include "host/bmc/sim/tomltable.h"

namespace velhost {

namespace {

constexpr std::string_view kAnyIpmi = "ipmi";
constexpr std::array<EExchangeKind, 7> kKinds = {
    EExchangeKind::kRegister, EExchangeKind::kTimestamp, EExchangeKind::kOpen, EExchangeKind::kSize,
    EExchangeKind::kRead,     EExchangeKind::kClose,     EExchangeKind::kDot};

std::optional<EExchangeKind> ReadKind(const TTomlTable& table) {
  const std::string expected = "one of register, timestamp, open, size, read, close, dot, ipmi";
  const TTomlMember& on = table.Require("on", expected);
  const std::string name = *table.String("on");
  if (name == kAnyIpmi) return std::nullopt;
  std::array<std::string_view, kKinds.size() + 1> names;
  for (std::size_t i = 0; i < kKinds.size(); ++i) {
    names.at(i) = NameOfKind(kKinds.at(i));
    if (names.at(i) == name) return kKinds.at(i);
  }
  names.back() = kAnyIpmi;
  table.Fail(on.value.place, "found " + Quoted(name) + " for \"on\", expected " + expected +
                                 Suggestion(NearestName(name, names), "\""));
}

void ReadAction(const TTomlTable& table, TFault& fault) {
  const bool isDot = fault.on == EExchangeKind::kDot;
  if (const auto code = table.Integer("completion_code", 0, 0xFF)) {
    fault.completionCode = static_cast<std::uint8_t>(*code);
    if (isDot) {
      table.Fail(table.Find("completion_code")->place,
                 "found \"completion_code\" for dot commands, which have no completion code, expected \"lost\" or "
                 "\"truncate\"");
    }
  }
  fault.lost = table.Boolean("lost").value_or(false);
  const std::int64_t least = isDot ? 0 : static_cast<std::int64_t>(wire::TCommandBuffer::kData);
  if (const auto size = table.Integer("truncate", least, std::numeric_limits<std::int32_t>::max())) {
    fault.truncate = static_cast<std::size_t>(*size);
  }
}

void RequireOneAction(const TTomlTable& table, const TFault& fault) {
  const int actions = (fault.completionCode ? 1 : 0) + (fault.lost ? 1 : 0) + (fault.truncate ? 1 : 0);
  if (actions == 1 || (actions == 0 && table.Find("delay_ms") != nullptr)) return;
  const TTomlMember* const lost = table.Find("lost");
  if (actions == 0 && lost != nullptr) {
    table.Fail(lost->place,
               "found \"lost\" = false, which has no effect, expected true, or \"completion_code\", \"truncate\" or "
               "\"delay_ms\"");
  }
  table.Fail(table.Place(), std::string("found ") + (actions == 0 ? "none" : "more than one") +
                                " of \"completion_code\", \"lost\" and \"truncate\", expected " +
                                (actions == 0 ? "one of them or \"delay_ms\"" : "one"));
}

}  // namespace

TFault ReadFault(const TTomlTable& table) {
  table.AllowOnly({"on", "node", "nth", "completion_code", "lost", "truncate", "delay_ms"});
  TFault fault;
  fault.on = ReadKind(table);
  if (const auto node = table.Integer("node", 0, std::numeric_limits<std::int32_t>::max())) {
    fault.node = static_cast<int>(*node);
  }
  fault.nth = table.Integer("nth", 1, std::numeric_limits<std::int64_t>::max());
  ReadAction(table, fault);
  fault.delay = std::chrono::milliseconds(table.Integer("delay_ms", 0, kLongestDelayMs).value_or(0));
  RequireOneAction(table, fault);
  const TTomlMember* action = table.Find("lost");
  if (!fault.lost) action = table.Find("truncate");
  const TTomlPlace& place = action == nullptr ? table.Place() : action->place;
  fault.line = place.line;
  fault.column = place.column;
  return fault;
}

namespace {

/// Cuts the answer to a command buffer of `size` bytes; leaves it alone if it claims no more.
void Truncate(std::size_t size, TIpmiAnswer& answer) {
  const std::size_t data = size - std::min(size, wire::TCommandBuffer::kData);
  if (data >= answer.DataLength()) return;
  answer.data.resize(data);
  answer.claimedDataLength.reset();
  answer.claimedLength.reset();
}

}  // namespace

TFaultInjector::TFaultInjector(IServiceProcessor& inner, std::vector<TFault> faults)
    : TForwardingServiceProcessor(inner), faults_(std::move(faults)) {
  for (std::size_t i = 0; i < faults_.size(); ++i) {
    TGroup& group = groups_[{faults_[i].on, faults_[i].node}];
    if (faults_[i].nth) {
      group.firstOf.emplace(*faults_[i].nth, i);
    } else {
      group.first = std::min(group.first, i);
    }
  }
}

// Faults after the one that is applied count the exchange as well.
const TFault* TFaultInjector::CountAndChoose(EExchangeKind kind, int node) {
  std::size_t chosen = kNone;
  std::vector<std::optional<EExchangeKind>> kinds = {kind};
  if (kind != EExchangeKind::kDot) kinds.emplace_back();
  for (const auto& on : kinds) {
    for (const std::optional<int> of : {std::optional(node), std::optional<int>()}) {
      const auto found = groups_.find({on, of});
      if (found == groups_.end()) continue;
      TGroup& group = found->second;
      ++group.count;
      chosen = std::min(chosen, group.first);
      const auto due = group.firstOf.find(group.count);
      if (due != group.firstOf.end()) chosen = std::min(chosen, due->second);
    }
  }
  return chosen == kNone ? nullptr : &faults_[chosen];
}

std::optional<TIpmiAnswer> TFaultInjector::SendIpmi(const TIpmiRequest& request, const TStopSignal& stop) {
  const TDiscovery found = Discover();
  const bool takesPlace = found.ipmiDriver && request.Node() >= 0 && request.Node() < found.bmcNodes;
  const TFault* fault = takesPlace ? CountAndChoose(KindOfRequest(request), request.Node()) : nullptr;
  if (fault == nullptr) return TForwardingServiceProcessor::SendIpmi(request, stop);
  if (!stop.WaitFor(fault->delay) || fault->lost) return std::nullopt;
  if (fault->completionCode) return TIpmiAnswer{*fault->completionCode, DataOfBareAnswer(request)};
  std::optional<TIpmiAnswer> answer = TForwardingServiceProcessor::SendIpmi(request, stop);
  if (answer && fault->truncate) Truncate(*fault->truncate, *answer);
  return answer;
}

std::optional<TDotAnswer> TFaultInjector::SendDot(const TDotRequest& request, const TStopSignal& stop) {
  const TDiscovery found = Discover();
  const int target = request.serviceProcessor;
  const bool takesPlace = found.dotCommands && target >= 0 && target < found.serviceProcessors;
  const TFault* fault = takesPlace ? CountAndChoose(EExchangeKind::kDot, target) : nullptr;
  if (fault == nullptr) return TForwardingServiceProcessor::SendDot(request, stop);
  if (!stop.WaitFor(fault->delay) || fault->lost) return std::nullopt;
  TDotRequest shorter = request;
  if (fault->truncate) shorter.capacity = std::min(*fault->truncate, request.capacity);
  return TForwardingServiceProcessor::SendDot(shorter, stop);
}

}  // namespace velhost
