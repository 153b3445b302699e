// What the output formats must say about an instance, for the fuzz target that reads them back. Header-only: it is
// built without the tests.
#pragma once

#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>
#include <string>

#include "host/base/cimdatetime.h"
#include "host/base/utf8.h"
#include "host/model/ciminstance.h"
#include "host/output/objectpath.h"
#include "tests/support/namespaces.h"
#include "tests/support/require.h"

namespace tests {

using TType = NKROVEL20::TCIMValue::TCIMType;

/// The text with U+FFFD in place of invalid UTF-8 and, for XML, of characters that XML cannot represent.
inline std::string Repaired(const std::string& text, bool isXml) {
  std::string repaired;
  for (std::size_t at = 0; at < text.size();) {
    const velhost::TCodePoint point = velhost::NextCodePoint(text, at);
    const bool isControl = point.value < 0x20 && point.value != '\t' && point.value != '\n' && point.value != '\r';
    const bool isLost = !point.valid || (isXml && (isControl || point.value == 0xFFFE || point.value == 0xFFFF));
    repaired += isLost ? std::string(velhost::kReplacementText) : text.substr(at, point.size);
    at += point.size;
  }
  return repaired;
}

/// A value as JSON: null, a number, a string or an array of these. Numbers that JSON cannot represent are null.
inline nlohmann::json JsonOf(const NKROVEL20::TCIMValue& value) {
  if (value.IsNull()) return nullptr;
  if (value.IsArray()) {
    nlohmann::json elements = nlohmann::json::array();
    for (const auto& element : static_cast<const std::vector<NKROVEL20::TCIMValue>&>(value)) {
      elements.push_back(JsonOf(element));
    }
    return elements;
  }
  switch (value.GetType().GetCode()) {
    case TType::kUint8:
    case TType::kUint64: return value.ToInteger();
    case TType::kReal64: return std::isfinite(value.ToReal()) ? nlohmann::json(value.ToReal()) : nlohmann::json();
    case TType::kChar16: {
      std::string text;
      velhost::AppendUtf8(text, static_cast<char32_t>(value.ToInteger()));
      return text;
    }
    default: return Repaired(value.ToString(10), false);
  }
}

/// Every property that is set, by name.
inline nlohmann::json PropertiesOf(const velhost::TInstance& instance) {
  nlohmann::json properties = nlohmann::json::object();
  for (std::size_t i = 0; i < instance.Class().Properties().size(); ++i) {
    if (!instance.IsSet(i)) continue;
    properties[instance.Class().Properties()[i]->Definition().name] = JsonOf(instance.Value(i));
  }
  return properties;
}

/// Requires that the PROPERTY.ARRAY has exactly these elements.
inline void RequireXmlArray(const pugi::xml_node& property, const nlohmann::json& elements) {
  pugi::xml_node element = property.child("VALUE.ARRAY").first_child();
  for (const nlohmann::json& each : elements) {
    const std::string expected = each.is_string() ? Repaired(each.get<std::string>(), true) : each.dump();
    Require(each.is_null() ? element.name() == std::string("VALUE.NULL") : element.child_value() == expected);
    element = element.next_sibling();
  }
  Require(!element);
}

/// Requires that the instance in the XML text has all `properties` with these values. For a real that is not a
/// number, the name is enough; for a reference that is an object path, it is enough that it is written as one.
inline void RequireXml(const std::string& text, const nlohmann::json& properties) {
  pugi::xml_document document;
  Require(document.load_string(text.c_str(), pugi::parse_default | pugi::parse_ws_pcdata_single));
  const pugi::xml_node instance = document.select_node("//INSTANCE").node();
  for (const auto& [name, value] : properties.items()) {
    const pugi::xml_node property = instance.find_child_by_attribute("NAME", name.c_str());
    Require(property);
    const std::string shown = property.child_value("VALUE");
    if (value.is_array()) {
      RequireXmlArray(property, value);
    } else if (value.is_number_integer()) {
      Require(shown == value.dump());
    } else if (value.is_number_float()) {
      Require(std::strtod(shown.c_str(), nullptr) == value.get<double>());
    } else if (value.is_null()) {
      Require(shown == "INF" || shown == "-INF" || shown == "NaN");
    } else if (name == "Time" && !velhost::IsCimDateTime(value.get<std::string>())) {
      Require(!property.child("VALUE"));
    } else if (name == "Path" && velhost::ParseObjectPath(value.get<std::string>())) {
      Require(property.name() == std::string("PROPERTY.REFERENCE") && property.child("VALUE.REFERENCE"));
    } else {
      Require(shown == Repaired(value.get<std::string>(), true));
    }
  }
}

}  // namespace tests
