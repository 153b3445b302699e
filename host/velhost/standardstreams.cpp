#include "host/velhost/standardstreams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>

#include "host/output/outputfile.h"

namespace velhost {

void PrepareStandardStreams() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) >= 0) continue;
    // For reading alone: a write to what was closed has to fail. The lowest free number is this one.
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

}  // namespace velhost
