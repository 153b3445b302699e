#include "host/velhost/messages.h"

#include <unistd.h>

#include <string>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/unsafetext.h"
#include "host/output/outputfile.h"
#include "host/velhost/exitstatus.h"

namespace velhost {

namespace {

constexpr std::string_view kPrefix = "velhost: ";

std::function<void()> beforeMessage;
bool showsDetails = false;

void WriteOut(std::string_view text) {
  if (beforeMessage) beforeMessage();
  try {
    TDescriptorSink sink(STDERR_FILENO, "standard error");
    sink.Write(text);
    sink.Flush();
  } catch (const THostError&) {  // there is nowhere left to report it
  }
}

std::string_view WithoutLastNewlines(std::string_view text) {
  while (text.ends_with('\n')) text.remove_suffix(1);
  return text;
}

}  // namespace

void Say(std::string_view text) { WriteOut(std::string(kPrefix) + SafeLines(WithoutLastNewlines(text)) + "\n"); }

void SayDetail(std::string_view text) {
  if (showsDetails) Say(text);
}

void ShowDetails(bool shown) { showsDetails = shown; }

void SayAndEndAtOnce(const std::string& text) {
  Say(text);
  _exit(static_cast<int>(EExitStatus::kInternal));
}

void SayDiagnostics(const std::vector<TTextDiagnostic>& diagnostics) {
  for (const TTextDiagnostic& diagnostic : diagnostics) Say(FormatDiagnostic(diagnostic));
}

void WriteToStandardError(std::string_view text) {
  if (isatty(STDERR_FILENO) == 1) return WriteOut(SafeLines(text));
  WriteOut(text);
}

TMessageHook::TMessageHook(std::function<void()> before) { beforeMessage = std::move(before); }

TMessageHook::~TMessageHook() { beforeMessage = nullptr; }

}  // namespace velhost
