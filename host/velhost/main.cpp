// velhost: loads the collector and runs it against a service processor.
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/hosterror.h"
#include "host/bmc/lan/lanspec.h"
#include "host/output/outputfile.h"
#include "host/velhost/commandline.h"
#include "host/velhost/installation.h"
#include "host/velhost/messages.h"
#include "host/velhost/verbs.h"

namespace {

bool UsesNetwork(const velhost::TCommonOptions& options) {
  return std::any_of(options.serviceProcessors.begin(), options.serviceProcessors.end(),
                     [](const std::string& spec) { return spec.starts_with("lan:"); });
}

velhost::EExitStatus RunVerb(const velhost::TCommandLine& commandLine) {
  const velhost::TInstallation installation;
  velhost::ShowDetails(commandLine.common.verbosity > 0);
  for (const std::string& text : commandLine.warnings) velhost::Say("warning: " + text);
  switch (commandLine.verb) {
    case velhost::EVerb::kCollect: return velhost::Collect(commandLine, installation);
    case velhost::EVerb::kClasses: return velhost::ListClasses(commandLine, installation);
    case velhost::EVerb::kDescribe: return velhost::DescribeClass(commandLine, installation);
    case velhost::EVerb::kPlugin: return velhost::ShowPlugin(commandLine, installation);
    case velhost::EVerb::kCheck: return velhost::CheckSchemaFiles(commandLine, installation);
    case velhost::EVerb::kShow: return velhost::Show(commandLine, installation);
    case velhost::EVerb::kDiff: return velhost::Diff(commandLine, installation);
    case velhost::EVerb::kSimulate: return velhost::SimulateCommand(commandLine.simulate, installation);
  }
  throw velhost::THostError(velhost::EFailure::kDefect, "unknown command");
}

int RunCommand(const std::vector<std::string>& arguments) {
  // Before anything else reads the environment, or passes it on to a child.
  auto password = velhost::TakeSecretVariable("VELHOST_IPMI_PASSWORD");
  std::string text;
  auto commandLine = velhost::ParseCommandLine(arguments, text);
  if (commandLine && UsesNetwork(commandLine->common)) commandLine->common.passwordVariable = password;
  password.reset();  // simulate starts a program, which must not inherit it
  if (commandLine) return static_cast<int>(RunVerb(*commandLine));
  velhost::WriteToStandardOutput(text);
  return 0;
}

int Fail(velhost::EFailure kind, const std::string& message) {
  velhost::Say(message);
  return static_cast<int>(velhost::StatusOf(kind));
}

// Uses neither a string nor a stream, because both allocate memory.
void WriteBare(std::string_view message) noexcept {
  [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, message.data(), message.size());
}

// If memory runs out where a library promises not to throw, as in the constructor of the generated MOF parser, no
// handler below is reached. This still gives a message and a status.
[[noreturn]] void EndWithoutHandler() {
  WriteBare("velhost: internal error: std::terminate was called; possibly out of memory\n");
  _exit(static_cast<int>(velhost::EExitStatus::kInternal));
}

}  // namespace

int main(int argc, char** argv) {
  std::set_terminate(&EndWithoutHandler);
  try {
    velhost::PrepareStandardStreams();
    return RunCommand(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const velhost::TClosedPipe& closed) {
    return static_cast<int>(velhost::StatusOf(closed.Kind()));  // silently: the reader of the output has seen enough
  } catch (const velhost::THostError& error) {
    return Fail(error.Kind(), error.what());
  } catch (const std::bad_alloc&) {
    WriteBare("velhost: internal error: out of memory\n");
    return static_cast<int>(velhost::EExitStatus::kInternal);
  } catch (const std::exception& error) {
    return Fail(velhost::EFailure::kDefect, std::string("internal error: ") + error.what());
  } catch (...) {
    return Fail(velhost::EFailure::kDefect, "internal error: an exception of unknown type");
  }
}
