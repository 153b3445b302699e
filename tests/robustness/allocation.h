// The memory of a whole test program, to be counted and to be refused. Linking allocation.cpp
// replaces operator new and delete for the program and the libraries that it uses; with the linker's
// --wrap=calloc also the program's own calloc. For one thread.
#pragma once

namespace allocation {

/// Blocks that are allocated now by operator new.
long LiveBlocks();

/// What is refused between Begin and End: the nth allocation, counted from 0, and, when `onward`, all
/// behind it.
struct TPlan {
  long nth = -1;
  bool onward = false;
};
void Begin(TPlan plan);
/// How many allocations were asked for since Begin.
long End();

/// Nothing is counted or refused while one lives: for what is the test's own.
class TPause {
 public:
  TPause();
  ~TPause();
  TPause(const TPause&) = delete;
  TPause& operator=(const TPause&) = delete;

 private:
  bool before_;
};

}  // namespace allocation
