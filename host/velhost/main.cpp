// velhost: loads the collector and runs it against a service processor.
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <string_view>

#include "host/core/hosterror.h"
#include "host/output/outputfile.h"
#include "host/velhost/commandline.h"
#include "host/velhost/installation.h"
#include "host/velhost/verbs.h"

namespace {

int RunCommand(const std::vector<std::string>& arguments) {
  const auto commandLine = NKROVEL20::ParseCommandLine(arguments, std::cout);
  if (!commandLine) return 0;
  return static_cast<int>(NKROVEL20::RunVerb(*commandLine, NKROVEL20::TInstallation()));
}

// Without a string of its own: it also tells that there is no memory left.
int Fail(NKROVEL20::EExitStatus status, const char* prefix, const char* message) {
  std::cout.flush();
  std::cerr << "velhost: " << prefix << message << "\n";
  return static_cast<int>(status);
}

// Where a library promises not to throw and there is no memory left, as the constructor of the
// generated MOF parser does, no handler below is reached. A status and a message all the same.
[[noreturn]] void EndWithoutHandler() {
  constexpr std::string_view kMessage = "velhost: internal error: std::terminate was called; is memory short?\n";
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, kMessage.data(), kMessage.size());
  _exit(static_cast<int>(NKROVEL20::EExitStatus::kInternal));
}

}  // namespace

int main(int argc, char** argv) {
  std::set_terminate(&EndWithoutHandler);
  try {
    return RunCommand(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const NKROVEL20::TClosedPipe& closed) {
    return static_cast<int>(closed.Status());  // quietly: whoever read the output has seen enough
  } catch (const NKROVEL20::THostError& error) {
    return Fail(error.Status(), "", error.what());
  } catch (const std::exception& error) {
    return Fail(NKROVEL20::EExitStatus::kInternal, "internal error: ", error.what());
  }
}
