// The format `cimxml`: a CIM-XML document of declarations (DSP0201, valid against DSP0203).
#include <fmt/format.h>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "host/base/cimdatetime.h"
#include "host/base/digits.h"
#include "host/base/text.h"
#include "host/base/utf8.h"
#include "host/output/objectpath.h"
#include "host/output/resulttext.h"
#include "host/output/valuetext.h"
#include "host/output/writers.h"

namespace velhost {

namespace {

constexpr TPlainCharacters kPlain = PlainBut("&<>\x7f");
constexpr TPlainCharacters kPlainInAttribute = PlainBut("&<>\"\x7f");
constexpr TPlainCharacters kPlainInComment = PlainBut("");

// Tabs and newlines are harmless unescaped.
bool IsReferred(char32_t character) { return IsUnsafe(character) && character != '\t' && character != '\n'; }

void AppendEscaped(std::string& xml, char32_t character, std::string_view bytes) {
  switch (character) {
    case '&': xml += "&amp;"; return;
    case '<': xml += "&lt;"; return;
    case '>': xml += "&gt;"; return;
    case '"': xml += "&quot;"; return;
    default: break;
  }
  if (IsReferred(character)) {
    xml += fmt::format("&#x{:X};", static_cast<unsigned int>(character));
  } else {
    xml += bytes;
  }
}

bool IsForbidden(char32_t character) {
  const bool control = character < 0x20 && character != '\t' && character != '\n' && character != '\r';
  return control || character == 0xFFFE || character == 0xFFFF;
}

/// Appends the string as character data: markup characters as entities, carriage returns and unsafe characters (see
/// IsUnsafe) as references ("&#xD;", "&#x202E;"), and U+FFFD for characters that XML 1.0 cannot hold and for bytes
/// that are not valid UTF-8. Tabs and newlines are unchanged.
void AppendXmlText(std::string& xml, std::string_view text) {
  const auto plain = [&xml](std::string_view run) { xml += run; };
  SplitText(text, kPlain, plain, [&xml](char32_t character, std::string_view bytes) {
    if (IsForbidden(character)) return void(xml += kReplacementText);
    AppendEscaped(xml, character, bytes);
  });
}

/// The string as the content of an attribute in double quotes; white space becomes blanks.
std::string XmlAttribute(std::string_view text) {
  std::string xml;
  const auto plain = [&xml](std::string_view run) { xml += run; };
  SplitText(text, kPlainInAttribute, plain, [&xml](char32_t character, std::string_view bytes) {
    // XML readers normalise white space in attributes to blanks; names do not contain any.
    const bool isSpace = character == '\t' || character == '\n' || character == '\r';
    if (isSpace || IsForbidden(character)) return void(xml += isSpace ? std::string_view(" ") : kReplacementText);
    AppendEscaped(xml, character, bytes);
  });
  return xml;
}

/// Safe text as the content of a comment, which must not contain two adjacent hyphens.
std::string XmlComment(std::string_view safeText) {
  std::string xml;
  const auto plain = [&xml](std::string_view run) {
    for (const char c : run) {
      if (c == '-' && !xml.empty() && xml.back() == '-') xml += ' ';
      xml += c;
    }
  };
  SplitText(safeText, kPlainInComment, plain, [&xml](char32_t character, std::string_view bytes) {
    xml += IsForbidden(character) ? kReplacementText : bytes;
  });
  return xml;
}

/// Holds the nodes of one instance at a time. Elements are never self-closed, and text is raw UTF-8. A carriage
/// return is written as a character reference, because XML readers would drop it otherwise. Characters that XML 1.0
/// cannot hold become U+FFFD, a datetime that does not exist becomes null with a comment, and a reference that is not
/// an object path becomes a string. What the result says besides its instances is in comments.
class TCimXmlWriter : public IResultWriter {
 public:
  explicit TCimXmlWriter(ITextSink& sink) : out_(sink) {}
  void Begin(const TResultHeader& header) override;
  void Instance(const TInstance& instance, const TInstanceFacts& facts) override;
  void End(const TResultSummary& summary) override;

 private:
  void Comment(std::string_view safeText);
  void Property(pugi::xml_node parent, const TPropertyDefinition& definition, const TCIMValue& value);
  void Scalar(pugi::xml_node property, const TCIMValue& value);
  void Array(pugi::xml_node property, const TCIMValue& value);
  void Reference(pugi::xml_node parent, const TPropertyDefinition& definition, const TCIMValue& value);
  /// The escaped text of a value, valid until the next call; null if the value has no text.
  const char* Text(const TCIMValue& value);

  TTextBuffer out_;
  TNumberText numbers_;
  pugi::xml_document document_;
  std::string scratch_;
  std::string escaped_;
};

void AppendText(pugi::xml_node parent, const std::string& text) {
  std::string xml;
  AppendXmlText(xml, text);
  parent.append_child(pugi::node_pcdata).set_value(xml.c_str());
}

void AppendNamed(pugi::xml_node parent, const char* element, const std::string& name) {
  parent.append_child(element).append_attribute("NAME").set_value(XmlAttribute(name).c_str());
}

void AppendLocalNamespace(pugi::xml_node parent, const TObjectPath& path) {
  pugi::xml_node local = parent.append_child("LOCALNAMESPACEPATH");
  for (const std::string& name : path.namespaces) AppendNamed(local, "NAMESPACE", name);
}

void AppendNamespace(pugi::xml_node parent, const TObjectPath& path) {
  if (path.host.empty()) return AppendLocalNamespace(parent, path);
  pugi::xml_node full = parent.append_child("NAMESPACEPATH");
  AppendText(full.append_child("HOST"), path.host);
  AppendLocalNamespace(full, path);
}

const char* TypeName(EKeyType type) {
  switch (type) {
    case EKeyType::kBoolean: return "boolean";
    case EKeyType::kNumeric: return "numeric";
    case EKeyType::kString: break;
  }
  return "string";
}

void AppendInstanceName(pugi::xml_node parent, const TObjectPath& path) {
  pugi::xml_node instance = parent.append_child("INSTANCENAME");
  instance.append_attribute("CLASSNAME").set_value(XmlAttribute(path.className).c_str());
  for (const TPathKey& key : path.keys) {
    pugi::xml_node binding = instance.append_child("KEYBINDING");
    binding.append_attribute("NAME").set_value(XmlAttribute(key.name).c_str());
    pugi::xml_node value = binding.append_child("KEYVALUE");
    value.append_attribute("VALUETYPE").set_value(TypeName(key.type));
    AppendText(value, key.value);
  }
}

// The element for a path that has namespaces.
const char* PathElement(const TObjectPath& path) {
  if (path.host.empty()) return path.isInstance ? "LOCALINSTANCEPATH" : "LOCALCLASSPATH";
  return path.isInstance ? "INSTANCEPATH" : "CLASSPATH";
}

// Appends a VALUE.REFERENCE with the path.
void AppendReference(pugi::xml_node parent, const TObjectPath& path) {
  pugi::xml_node place = parent.append_child("VALUE.REFERENCE");
  if (!path.namespaces.empty()) {
    place = place.append_child(PathElement(path));
    AppendNamespace(place, path);
  }
  if (path.isInstance) return AppendInstanceName(place, path);
  AppendNamed(place, "CLASSNAME", path.className);
}

using TType = TCIMValue::TCIMType;

// The text is already escaped when it is added to the tree.
constexpr unsigned int kFormat = pugi::format_raw | pugi::format_no_empty_element_tags | pugi::format_no_escapes;

class TBufferWriter : public pugi::xml_writer {
 public:
  explicit TBufferWriter(TTextBuffer& out) : out_(out) {}
  void write(const void* data, std::size_t size) override {
    out_.Append(std::string_view(static_cast<const char*>(data), size));
  }

 private:
  TTextBuffer& out_;
};

const char* RealWithoutDigits(double number) {
  if (std::isnan(number)) return "NaN";
  return number < 0 ? "-INF" : "INF";
}

// Arrays of references do not exist in CIM-XML, and a reference has no type name of its own.
std::string TypeName(TType type) { return type == TType::kReference ? "string" : type.ToString(); }

pugi::xml_node AppendProperty(pugi::xml_node parent, const char* element, const TPropertyDefinition& definition) {
  pugi::xml_node property = parent.append_child(element);
  property.append_attribute("NAME").set_value(XmlAttribute(definition.name).c_str());
  property.append_attribute("TYPE").set_value(TypeName(definition.type).c_str());
  return property;
}

}  // namespace

void TCimXmlWriter::Comment(std::string_view safeText) {
  out_.Append("<!-- ");
  out_.Append(XmlComment(safeText));
  out_.Append(" -->\n");
}

void TCimXmlWriter::Begin(const TResultHeader& header) {
  out_.Append("<?xml version=\"1.0\" encoding=\"utf-8\"?>\n");
  for (const std::string& line : HeaderComments(header, ELabels::kLeftOut)) Comment(line);
  Comment("U+FFFD replaces characters that XML cannot represent and bytes that are not UTF-8");
  out_.Append("<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n<DECLARATION>\n<DECLGROUP>\n");
}

void TCimXmlWriter::Instance(const TInstance& instance, const TInstanceFacts& facts) {
  for (const std::string& line : InstanceComments(facts)) Comment(line);
  document_.reset();
  pugi::xml_node object = document_.append_child("VALUE.OBJECT");
  pugi::xml_node node = object.append_child("INSTANCE");
  node.append_attribute("CLASSNAME").set_value(XmlAttribute(instance.Class().Name()).c_str());
  const auto& properties = instance.Class().Properties();
  for (std::size_t i = 0; i < properties.size(); ++i) {
    if (instance.IsSet(i)) Property(node, properties[i]->Definition(), instance.Value(i));
  }
  TBufferWriter writer(out_);
  object.print(writer, "", kFormat, pugi::encoding_utf8);
  out_.Append('\n');
}

void TCimXmlWriter::End(const TResultSummary& summary) {
  out_.Append("</DECLGROUP>\n</DECLARATION>\n</CIM>\n");
  for (const std::string& line : SummaryComments(summary)) Comment(line);
  out_.Flush();
}

void TCimXmlWriter::Property(pugi::xml_node parent, const TPropertyDefinition& definition, const TCIMValue& value) {
  if (definition.isArray) {
    Array(AppendProperty(parent, "PROPERTY.ARRAY", definition), value);
  } else if (definition.type == TType::kReference) {
    Reference(parent, definition, value);
  } else {
    Scalar(AppendProperty(parent, "PROPERTY", definition), value);
  }
}

void TCimXmlWriter::Scalar(pugi::xml_node property, const TCIMValue& value) {
  if (value.IsNull()) return;
  if (const char* text = Text(value)) {
    property.append_child("VALUE").append_child(pugi::node_pcdata).set_value(text);
  } else {
    property.append_child(pugi::node_comment).set_value((" not a valid datetime: " + scratch_ + " ").c_str());
  }
}

void TCimXmlWriter::Array(pugi::xml_node property, const TCIMValue& value) {
  if (value.IsNull()) return;
  pugi::xml_node array = property.append_child("VALUE.ARRAY");
  for (const TCIMValue& element : static_cast<const std::vector<TCIMValue>&>(value)) {
    const char* text = element.IsNull() ? nullptr : Text(element);
    if (text == nullptr) {
      array.append_child("VALUE.NULL");
    } else {
      array.append_child("VALUE").append_child(pugi::node_pcdata).set_value(text);
    }
  }
}

void TCimXmlWriter::Reference(pugi::xml_node parent, const TPropertyDefinition& definition, const TCIMValue& value) {
  const auto path = value.IsNull() ? std::optional<TObjectPath>() : ParseObjectPath(value.ToString(10));
  if (!path && !value.IsNull()) return Scalar(AppendProperty(parent, "PROPERTY", definition), value);
  pugi::xml_node property = parent.append_child("PROPERTY.REFERENCE");
  property.append_attribute("NAME").set_value(XmlAttribute(definition.name).c_str());
  if (!definition.referenceClass.empty()) {
    property.append_attribute("REFERENCECLASS").set_value(XmlAttribute(definition.referenceClass).c_str());
  }
  if (path) AppendReference(property, *path);
}

const char* TCimXmlWriter::Text(const TCIMValue& value) {
  escaped_.clear();
  scratch_.clear();
  switch (value.GetType().GetCode()) {
    case TType::kNone: return nullptr;
    case TType::kBoolean: return value.ToInteger() != 0 ? "TRUE" : "FALSE";
    case TType::kReal32:
    case TType::kReal64:
      escaped_ = numbers_.Real(value);
      return escaped_.empty() ? RealWithoutDigits(value.ToReal()) : escaped_.c_str();
    case TType::kChar16: AppendUtf8(scratch_, static_cast<char32_t>(value.ToInteger())); break;
    case TType::kDateTime: value.AppendTo(scratch_, 10); return IsCimDateTime(scratch_) ? scratch_.c_str() : nullptr;
    case TType::kString:
    case TType::kReference: value.AppendTo(scratch_, 10); break;
    case TType::kUint8: escaped_ = ByteText(static_cast<std::uint8_t>(value.ToInteger())); return escaped_.c_str();
    default: escaped_ = numbers_.Integer(value); return escaped_.c_str();
  }
  AppendXmlText(escaped_, scratch_);
  return escaped_.c_str();
}

std::unique_ptr<IResultWriter> MakeCimXmlWriter(ITextSink& sink) { return std::make_unique<TCimXmlWriter>(sink); }

}  // namespace velhost
