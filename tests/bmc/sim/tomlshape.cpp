// Reads documents from standard input, each preceded by a line with its size in bytes, and prints a line of JSON for
// each: its content, or the message. tomloracle_test.py checks the output.
#include <iostream>
#include <string>

#include "host/bmc/sim/tomldocument.h"

using namespace NKROVEL20;
using namespace velhost;
using EKind = TTomlValue::EKind;

namespace {

std::string Hex(std::string_view text) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::string hex = "\"";
  for (const char c : text) {
    hex += kDigits[static_cast<unsigned char>(c) >> 4U];
    hex += kDigits[static_cast<unsigned char>(c) & 0x0FU];
  }
  return hex + "\"";
}

std::string Shape(const TTomlValue& value);

std::string ShapeOfTable(const TTomlTableContent& table) {
  std::string text;
  for (const TTomlMember& member : table.members) {
    text += (text.empty() ? "" : ",") + Hex(member.name) + ":" + Shape(member.value);
  }
  return "{" + text + "}";
}

std::string ShapeOfArray(const TTomlArrayContent& array) {
  std::string text;
  for (const TTomlValue& element : array.elements) text += (text.empty() ? "" : ",") + Shape(element);
  return "[" + text + "]";
}

std::string Shape(const TTomlValue& value) {
  switch (value.kind) {
    case EKind::kTable: return ShapeOfTable(*value.table);
    case EKind::kArray: return ShapeOfArray(*value.array);
    case EKind::kString: return Hex(value.text);
    case EKind::kInteger: return std::to_string(value.integer);
    case EKind::kBoolean: return value.integer != 0 ? "true" : "false";
    case EKind::kDateTime: return "\"date-time " + std::string(value.text) + "\"";
    default: return std::string("\"") + NameOfTomlKind(value.kind) + "\"";
  }
}

}  // namespace

int main() {
  std::size_t size = 0;
  while (std::cin >> size) {
    std::string text(size, '\0');
    std::cin.get();
    std::cin.read(text.data(), static_cast<std::streamsize>(size));
    try {
      std::cout << Shape(ParseTomlDocument("d", text)->root) << "\n";
    } catch (const THostError& error) {
      const std::string message = error.what();
      std::cout << "[" << Hex(message.substr(0, message.find('\n'))) << ",null]\n";
    }
  }
}
