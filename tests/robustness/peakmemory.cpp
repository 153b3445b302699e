// Runs a command and writes its peak resident memory, in KiB, to a file. This is a separate program because
// the figure includes the memory of the process that starts the command, which should be small.
//
//   peakmemory FILE COMMAND [ARGUMENT...]
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>

int main(int argc, char** argv) {
  if (argc < 3) return 64;
  const pid_t child = fork();
  if (child == 0) {
    execv(argv[2], argv + 2);
    _exit(127);
  }
  int status = 0;
  rusage usage = {};
  if (child < 0 || wait4(child, &status, 0, &usage) != child) return 70;
  std::ofstream(argv[1]) << usage.ru_maxrss << "\n";
  return WIFEXITED(status) ? WEXITSTATUS(status) : 70;
}
