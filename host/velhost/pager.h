// The program in which people read long text on a terminal.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "host/base/descriptor.h"
#include "host/base/text.h"
#include "host/velhost/commandline.h"

namespace velhost {

/// Text for people on standard output. On a terminal it goes to a pager, which is started when the first text is
/// written: the command in VELHOST_PAGER, else the one in PAGER, else `less`, with LESS=FRX if LESS is not set. Without
/// a pager it goes to standard output: if none is wanted, if the command is empty or `cat`, if the process is not in
/// the terminal's foreground, or if the program cannot be started.
///
/// While the pager runs it owns the terminal, so the messages of Say and the trace on standard error go to it too, in
/// order, unless standard error is somewhere else. Only one object may exist at a time.
class TPager : public ITextSink {
 public:
  explicit TPager(const TCommonOptions& options);
  /// Waits like Close, but reports nothing.
  ~TPager() override;
  TPager(const TPager&) = delete;
  TPager& operator=(const TPager&) = delete;

  /// Never waits for the pager: text that it does not take yet is kept. Text is dropped once the user has left the
  /// pager. Without a pager, throws TClosedPipe, or THostError (kNotWritten).
  void Write(std::string_view text) override;
  /// Ends the text and waits until the user has left the pager. Ctrl-C means the pager then, and a signal that ends
  /// this process does so when the pager has been left. Throws
  /// THostError (kNotWritten) if the shell could not run the command.
  void Close();

  bool IsRunning() const { return process_ > 0; }
  /// Whether the user left the pager before Close.
  bool WasLeft() const { return wasLeft_; }
  /// Called once if that happens, from any thread.
  void SetLeftCallback(std::function<void()> onLeft);

 private:
  void Start();
  bool Run(const std::vector<std::string>& words);
  void Push();
  void Drain() noexcept;
  int WaitForEnd() noexcept;
  void Watch();
  void Leave();

  std::string command_;  ///< empty: none
  bool isStarted_ = false;
  std::atomic<bool> wasLeft_ = false;
  pid_t process_ = -1;
  TDescriptor pipe_;
  std::string pending_;  ///< not taken yet
  std::mutex callbackMutex_;
  std::function<void()> onLeft_;
  TEvent closing_;
  std::thread watcher_;  ///< notices that the pager has been left when nothing is being written
};

/// Writes all of the text through a pager, and waits for it.
void WriteForPeople(const TCommonOptions& options, std::string_view text);

/// Passes a message to the pager if one runs, even one that has been left. Returns false if none does.
bool WriteToRunningPager(std::string_view text);

/// Ends the text and waits for the pager, if one runs. Safe in a signal handler, after which the process must end.
void WaitForPagerBeforeTheEnd() noexcept;
bool IsPagerRunning() noexcept;
/// A signal handler that does so, and then ends the process as if the signal was not handled.
void EndBySignalAfterPager(int signal) noexcept;

}  // namespace velhost
