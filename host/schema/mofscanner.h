// The generated scanner, as the parser calls it.
#pragma once

#include "host/schema/mofscan.h"

namespace velhost::Mof {

class TScanner {
 public:
  /// Scans `scan`'s text in place; the text is as it was once the scanner is gone.
  explicit TScanner(TScan& scan);
  ~TScanner();
  TScanner(const TScanner&) = delete;
  TScanner& operator=(const TScanner&) = delete;

  /// The next token, from the end of the text on always the end. String literals that follow each
  /// other are one token.
  int Next(TSemantic& value, TSpan& span);

 private:
  struct TAhead {
    int token;  // -1: nothing has been read ahead
    TSemantic value;
    TSpan span;
  };

  int Scan(TSemantic& value, TSpan& span);

  TScan& scan_;
  void* handle_ = nullptr;
  TAhead ahead_;
};

}  // namespace velhost::Mof
