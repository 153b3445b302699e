// Counts or refuses the memory allocations of a whole test program. Linking allocation.cpp replaces operator
// new and delete for the program and the libraries that it uses; with the linker's --wrap=calloc, also the
// program's own calloc. Single-threaded.
#pragma once

namespace allocation {

/// The number of blocks currently allocated by operator new.
long LiveBlocks();

/// What is refused between Begin and End: the nth allocation, counted from 0, and if `onward`, also all later
/// ones.
struct TPlan {
  long nth = -1;
  bool onward = false;
};
void Begin(TPlan plan);
/// The number of allocations requested since Begin.
long End();

/// While one exists, nothing is counted or refused: for the test's own allocations.
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
