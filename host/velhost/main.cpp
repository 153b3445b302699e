// velhost: loads the collector and runs it against a service processor.
#include <exception>
#include <string>
#include <vector>

#include "host/core/hosterror.h"
#include "host/output/outputfile.h"
#include "host/velhost/commandline.h"
#include "host/velhost/installation.h"
#include "host/velhost/messages.h"
#include "host/velhost/standardstreams.h"
#include "host/velhost/verbs.h"

namespace {

int RunCommand(const std::vector<std::string>& arguments) {
  std::string text;
  const auto commandLine = NKROVEL20::ParseCommandLine(arguments, text);
  if (commandLine) return static_cast<int>(NKROVEL20::RunVerb(*commandLine, NKROVEL20::TInstallation()));
  NKROVEL20::WriteToStandardOutput(text);
  return 0;
}

int Fail(NKROVEL20::EExitStatus status, const std::string& message) {
  NKROVEL20::Say(message);
  return static_cast<int>(status);
}

}  // namespace

int main(int argc, char** argv) {
  NKROVEL20::PrepareStandardStreams();
  try {
    return RunCommand(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const NKROVEL20::TClosedPipe& closed) {
    return static_cast<int>(closed.Status());  // quietly: whoever read the output has seen enough
  } catch (const NKROVEL20::THostError& error) {
    return Fail(error.Status(), error.what());
  } catch (const std::exception& error) {
    return Fail(NKROVEL20::EExitStatus::kInternal, std::string("internal error: ") + error.what());
  } catch (...) {
    return Fail(NKROVEL20::EExitStatus::kInternal, "internal error: an exception of unknown type");
  }
}
