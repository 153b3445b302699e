// A LAN module that follows a script: what each opening and each exchange must look like, and its outcome.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "host/bmc/lan/lanmodule.h"
#include "tests/support/namespaces.h"

struct VelLanSession {
  int number;
};

namespace tests {

using TBytes = std::vector<std::uint8_t>;

/// One script at a time, because the interface has no context. Steps left over fail the test.
class TScriptedModule {
 public:
  struct TOpening {
    std::string address, user, password;
    int privilege, cipherSuite;
    bool leavePrivilegeOpen;
    std::uint32_t sessionTime, retransmissionTime;
  };
  struct TRequest {
    int session, networkFunction, lun;
    TBytes bytes;
  };

  TScriptedModule() { current_ = this; }
  ~TScriptedModule() {
    EXPECT_TRUE(openings_.empty()) << openings_.size() << " expected openings were not made";
    EXPECT_TRUE(exchanges_.empty()) << exchanges_.size() << " expected exchanges were not made";
    EXPECT_EQ(openSessions_, 0) << "sessions were left open";
    current_ = nullptr;
  }
  TScriptedModule(const TScriptedModule&) = delete;
  TScriptedModule& operator=(const TScriptedModule&) = delete;

  TScriptedModule& Open(int status = VEL_LAN_OK, const std::string& message = "") {
    openings_.push_back({status, message, nullptr});
    return *this;
  }
  /// Runs `action` on the thread that opens the session; the opening then succeeds.
  TScriptedModule& OpenAfter(std::function<void()> action) {
    openings_.push_back({VEL_LAN_OK, "", std::move(action)});
    return *this;
  }
  TScriptedModule& Answer(const TBytes& response) {
    exchanges_.push_back({VEL_LAN_OK, response, nullptr});
    return *this;
  }
  TScriptedModule& Lose(int status = VEL_LAN_BROKEN_OFF) {
    exchanges_.push_back({status, {}, nullptr});
    return *this;
  }
  /// Runs `action` on the thread that makes the exchange, which then ends with the status and no data.
  TScriptedModule& Do(std::function<void()> action, int status = VEL_LAN_OK) {
    exchanges_.push_back({status, {0x00}, std::move(action)});
    return *this;
  }

  int ClosedSessions() const { return closedSessions_; }

  std::vector<TOpening> opened;
  std::vector<TRequest> sent;

  static const VelLanModule& Module() {
    static constexpr VelLanModule kModule = {VELHOST_LAN_INTERFACE, OpenSession, ExchangeOnce, CloseSession};
    return kModule;
  }

 private:
  struct TOpenStep {
    int status;
    std::string message;
    std::function<void()> action;
  };
  struct TExchangeStep {
    int status;
    TBytes response;
    std::function<void()> action;
  };

  static VelLanSession* OpenSession(const VelLanOpening* opening, int* status, char* message, std::size_t size) {
    TScriptedModule& self = *current_;
    self.opened.push_back({opening->address, opening->user, opening->password, opening->privilege, opening->cipherSuite,
                           opening->leavePrivilegeOpen != 0, opening->sessionTime, opening->retransmissionTime});
    TOpenStep step = {VEL_LAN_FAILED, "the script has no such opening", nullptr};
    EXPECT_FALSE(self.openings_.empty()) << step.message;
    if (!self.openings_.empty()) {
      step = self.openings_.front();
      self.openings_.pop_front();
    }
    if (step.action) step.action();
    *status = step.status;
    std::snprintf(message, size, "%s", step.message.c_str());
    if (step.status != VEL_LAN_OK) return nullptr;
    ++self.openSessions_;
    return new VelLanSession{static_cast<int>(self.opened.size())};
  }

  static int ExchangeOnce(VelLanSession* session, std::uint8_t networkFunction, std::uint8_t lun,
                          const std::uint8_t* request, std::size_t requestSize, std::uint8_t* response,
                          std::size_t capacity, std::size_t* size) {
    TScriptedModule& self = *current_;
    self.sent.push_back({session->number, networkFunction, lun, TBytes(request, request + requestSize)});
    EXPECT_FALSE(self.exchanges_.empty()) << "the script has no such exchange";
    if (self.exchanges_.empty()) return VEL_LAN_FAILED;
    const TExchangeStep step = self.exchanges_.front();
    self.exchanges_.pop_front();
    if (step.action) step.action();
    *size = std::min(capacity, step.response.size());
    std::copy_n(step.response.begin(), *size, response);
    return step.status;
  }

  static void CloseSession(VelLanSession* session) {
    delete session;
    --current_->openSessions_;
    ++current_->closedSessions_;
  }

  std::deque<TOpenStep> openings_;
  std::deque<TExchangeStep> exchanges_;
  std::atomic<int> openSessions_ = 0;
  std::atomic<int> closedSessions_ = 0;
  inline static TScriptedModule* current_ = nullptr;
};

}  // namespace tests
