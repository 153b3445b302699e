// The generated scanner, as the parser calls it.
#pragma once

#include "host/schema/mofscan.h"

namespace NKROVEL20::Mof {

class TScanner {
 public:
  /// Scans `scan`'s text in place; the text is as it was once the scanner is gone.
  explicit TScanner(TScan& scan);
  ~TScanner();
  TScanner(const TScanner&) = delete;
  TScanner& operator=(const TScanner&) = delete;

  /// The next token, from the end of the text on always the end.
  int Next(TSemantic& value, TSpan& span);

 private:
  TScan& scan_;
  void* handle_ = nullptr;
};

}  // namespace NKROVEL20::Mof
