#include "host/velhost/messages.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <string>
#include <utility>

#include "host/base/hosterror.h"
#include "host/base/text.h"
#include "host/output/outputfile.h"
#include "host/velhost/pager.h"
#include "host/velhost/verbs.h"

namespace velhost {

namespace {

constexpr int kDefaultWidth = 80;
constexpr int kWidest = 1000;

std::string_view Variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string_view() : std::string_view(value);
}

}  // namespace

void PrepareStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    // Read-only, so that a write to the closed stream still fails. open() returns the lowest free number, which is
    // this one.
    [[maybe_unused]] const int taken = open("/dev/null", O_RDONLY);
  }
  IgnoreBrokenPipeSignal();
  std::signal(SIGXFSZ, SIG_IGN);
}

void WriteToStandardOutput(std::string_view text) {
  TDescriptorSink sink(STDOUT_FILENO, "standard output");
  sink.Write(text);
  sink.Flush();
}

bool IsTerminal(int descriptor) { return isatty(descriptor) == 1; }

int TerminalWidth(int descriptor) {
  winsize size = {};
  if (ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  const int columns = std::atoi(std::string(Variable("COLUMNS")).c_str());
  return columns > 0 && columns <= kWidest ? columns : kDefaultWidth;
}

bool UseColor(EWhen when, int descriptor) {
  if (when != EWhen::kAuto) return when == EWhen::kAlways;
  return IsTerminal(descriptor) && Variable("NO_COLOR").empty() && Variable("TERM") != "dumb";
}

namespace {

constexpr std::string_view kPrefix = "velhost: ";

std::function<void()> beforeMessage;
bool showsDetails = false;

void WriteOut(std::string_view text) {
  if (beforeMessage) beforeMessage();
  if (IsTerminal(STDERR_FILENO) && WriteToRunningPager(text)) return;
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
  WaitForPagerBeforeTheEnd();
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
