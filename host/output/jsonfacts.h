// What is known of instances and exchanges as JSON, wherever a document says it.
#pragma once

#include <cstdint>

#include "host/output/jsontext.h"
#include "host/result/instancefacts.h"

namespace velhost {

/// "0xABCDEF", in quotes.
void AppendAddress(TJsonText& json, std::uint32_t address);
/// `"origin":{...}`
void AppendOrigin(TJsonText& json, const TOrigin& origin);
/// `"file":{...}`
void AppendFile(TJsonText& json, const TFileFacts& file);
/// `"completion_code":203`, `"lost":true`, ...
void AppendHow(TJsonText& json, THow how);
/// {"property":...}
void AppendMissing(TJsonText& json, const TMissing& missing);
/// {"address":...} or {"index":...}
void AppendRegister(TJsonText& json, const TRegisterFacts& facts);

}  // namespace velhost
