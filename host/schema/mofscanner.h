// The interface of the generated scanner.
#pragma once

#include "host/schema/mofscan.h"

namespace velhost::Mof {

class TScanner {
 public:
  /// Scans `scan`'s text in place; the text is restored when the scanner is destroyed.
  explicit TScanner(TScan& scan);
  ~TScanner();
  TScanner(const TScanner&) = delete;
  TScanner& operator=(const TScanner&) = delete;

  /// The next token; at the end of the text always END. Adjacent string literals form one token.
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
