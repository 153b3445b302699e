#include "host/base/descriptor.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>

#include <array>
#include <cerrno>
#include <string>
#include <thread>

namespace velhost {
namespace {

struct TPipe {
  explicit TPipe(int flags = 0) {
    std::array<int, 2> ends{};
    EXPECT_EQ(pipe2(ends.data(), O_CLOEXEC | flags), 0);
    reading = TDescriptor(ends[0]);
    writing = TDescriptor(ends[1]);
  }
  TDescriptor reading;
  TDescriptor writing;
};

bool IsReadable(int descriptor) {
  pollfd waiter = {descriptor, POLLIN, 0};
  return poll(&waiter, 1, 0) == 1;
}

bool IsOpen(int descriptor) { return fcntl(descriptor, F_GETFD) >= 0; }

TEST(TDescriptor, ClosesWhatItOwns) {
  TPipe pipe;
  const int number = pipe.writing.Get();
  pipe.writing = TDescriptor();
  EXPECT_FALSE(IsOpen(number));
  EXPECT_FALSE(pipe.writing);
}

TEST(TDescriptor, HandsOverWhatItOwns) {
  TPipe pipe;
  const int number = pipe.writing.Get();
  {
    const TDescriptor other(std::move(pipe.writing));
    EXPECT_EQ(other.Get(), number);
    EXPECT_EQ(pipe.writing.Get(), -1);
    EXPECT_TRUE(IsOpen(number));
  }
  EXPECT_FALSE(IsOpen(number));
}

TEST(TDescriptor, ReportsWhatCloseReturns) {
  TPipe pipe;
  EXPECT_EQ(pipe.reading.Close(), 0);
  EXPECT_EQ(pipe.reading.Close(), 0);
  TDescriptor closedByOthers(pipe.writing.Get());
  EXPECT_EQ(closedByOthers.Close(), 0);
  EXPECT_EQ(pipe.writing.Close(), -1);
}

TEST(WriteAll, WaitsForANonBlockingDescriptor) {
  TPipe pipe(O_NONBLOCK);
  const std::string text(1'000'000, 'x');  // a pipe takes 65,536
  std::string got;
  std::thread reader([&] {
    std::array<char, 4096> piece{};
    while (got.size() < text.size()) {
      const ssize_t size = read(pipe.reading.Get(), piece.data(), piece.size());
      if (size > 0) got.append(piece.data(), static_cast<std::size_t>(size));
    }
  });
  EXPECT_EQ(WriteAll(pipe.writing.Get(), text), 0);
  reader.join();
  EXPECT_EQ(got, text);
}

TEST(WriteAll, ReturnsTheErrorThatEndedIt) {
  TPipe pipe;
  EXPECT_EQ(WriteAll(-1, "x"), EBADF);
  EXPECT_EQ(WriteAll(pipe.reading.Get(), "x"), EBADF);
  EXPECT_EQ(WriteAll(-1, ""), 0);
}

TEST(TEvent, IsReadableFromSetUntilClear) {
  TEvent event;
  EXPECT_FALSE(IsReadable(event.Descriptor()));
  event.Set();
  event.Set();
  EXPECT_TRUE(IsReadable(event.Descriptor()));
  event.Clear();
  EXPECT_FALSE(IsReadable(event.Descriptor()));
}

}  // namespace
}  // namespace velhost
