// The format `cimxml`: a CIM-XML document of declarations (DSP0201, valid against DSP0203).
#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "host/output/iresultwriter.h"
#include "host/output/valuetext.h"

namespace velhost {

/// Holds the nodes of one instance at a time. Elements are never self-closed, and text is raw UTF-8. A carriage
/// return is written as a character reference, because XML readers would drop it otherwise. Characters that XML 1.0
/// cannot hold become U+FFFD, a datetime that does not exist becomes null with a comment, and a reference that is not
/// an object path becomes a string. What the result says beside its instances is in comments.
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

}  // namespace velhost
