// The form `cimxml`: a CIM-XML document of declarations (DSP0201, valid against DSP0203).
#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "host/output/iinstancewriter.h"
#include "host/output/textbuffer.h"
#include "host/output/valuetext.h"

namespace velhost {

/// One node tree at a time: that of the instance being written. No element is self-closed, text is
/// raw UTF-8, and a carriage return is a character reference, as XML readers drop it otherwise.
/// Characters that XML 1.0 cannot hold become U+FFFD, a point in time that does not exist null with a
/// comment, and a reference that is no object path a string. Header, marks and summary are comments.
class TCimXmlWriter : public IInstanceWriter {
 public:
  explicit TCimXmlWriter(ITextSink& sink) : out_(sink) {}
  void Begin(const TCollectionHeader& header) override;
  void Instance(const TInstance& instance, bool incomplete) override;
  void End(const TCollectionSummary& summary) override;

 private:
  void Comment(std::string_view safeText);
  void Property(pugi::xml_node parent, const TPropertyDefinition& definition, const TCIMValue& value);
  void Scalar(pugi::xml_node property, const TCIMValue& value);
  void Array(pugi::xml_node property, const TCIMValue& value);
  void Reference(pugi::xml_node parent, const TPropertyDefinition& definition, const TCIMValue& value);
  /// The text of a value, escaped, valid until the next call; null where the value has none.
  const char* Text(const TCIMValue& value);

  TTextBuffer out_;
  TNumberText numbers_;
  pugi::xml_document document_;
  std::string scratch_;
  std::string escaped_;
};

}  // namespace velhost
