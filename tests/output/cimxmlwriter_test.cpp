#include <pugixml.hpp>

#include "host/output/objectpath.h"
#include "tests/output/outputfixture.h"
#include "tests/support/namespaces.h"

namespace tests {
namespace {

class CimXmlWriter : public TAwkwardTest {
 protected:
  /// The element of a property "P" with that type and value.
  std::string Xml(TType type, const TCIMValue& value) {
    const std::string text = Written(EOutputForm::kCimXml, {One(type, value)}, Complete());
    const std::string before = R"(<VALUE.OBJECT><INSTANCE CLASSNAME="KROSG_One">)";
    const std::size_t start = text.find(before) + before.size();
    return text.substr(start, text.find("</INSTANCE></VALUE.OBJECT>\n") - start);
  }
  std::string ReferenceXml(const std::string& path) {
    return Xml(TType::kReference, TCIMValue::FromText(TType::kReference, path));
  }
};

TEST_F(CimXmlWriter, WritesADocumentOfDeclarations) {
  const auto instance = One(TType::kUint16, TCIMValue::FromInteger(TType::kUint16, 7));
  EXPECT_EQ(Written(EOutputForm::kCimXml, {instance, instance}, Complete()),
            "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
            "<!-- Instances collected by velhost 2.0, run 0f8fad5b-d9cb-4d9f-a165-70867728950e, started "
            "2026-01-31T12:34:56.789+01:00, on collector -->\n"
            "<!-- source: lan:bmc0 -->\n"
            "<!-- machine type 6203, Engineering Information Collector 1.0 (interface version 1.1) -->\n"
            "<!-- schema: schema, SHA-256 aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa -->\n"
            "<!-- U+FFFD replaces characters that XML cannot represent and bytes that are not UTF-8 -->\n"
            "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n<DECLARATION>\n<DECLGROUP>\n"
            "<!-- KROSG_One/?1 -->\n"
            "<VALUE.OBJECT><INSTANCE CLASSNAME=\"KROSG_One\"><PROPERTY NAME=\"P\" TYPE=\"uint16\"><VALUE>7</VALUE>"
            "</PROPERTY></INSTANCE></VALUE.OBJECT>\n"
            "<!-- KROSG_One/?1 -->\n"
            "<VALUE.OBJECT><INSTANCE CLASSNAME=\"KROSG_One\"><PROPERTY NAME=\"P\" TYPE=\"uint16\"><VALUE>7</VALUE>"
            "</PROPERTY></INSTANCE></VALUE.OBJECT>\n"
            "</DECLGROUP>\n</DECLARATION>\n</CIM>\n"
            "<!-- status: complete -->\n<!-- exit status: 0 -->\n<!-- exchanges: 42, none failed -->\n<!-- elapsed: "
            "1.234 s -->\n");
}

TEST_F(CimXmlWriter, WritesAnAwkwardInstance) {
  const std::string text = Written(EOutputForm::kCimXml, {Awkward()}, Complete());
  const std::size_t start = text.find("<VALUE.OBJECT>");
  EXPECT_EQ(text.substr(start, text.find("</DECLGROUP>") - start),
            "<VALUE.OBJECT><INSTANCE CLASSNAME=\"KROSG_Awkward\">"
            "<PROPERTY NAME=\"Quotes\" TYPE=\"string\"><VALUE>say \"hi\" \\ &lt;&amp;&gt;</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Controls\" TYPE=\"string\"><VALUE>t\tn\nr&#xD;e\uFFFDz\uFFFDd&#x7F;</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"NonAscii\" TYPE=\"string\"><VALUE>Gr\u00fc\u00dfe \u6f22 \U0001F600</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Invalid\" TYPE=\"string\"><VALUE>a\uFFFDb\uFFFD</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Empty\" TYPE=\"string\"><VALUE></VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Nothing\" TYPE=\"string\"></PROPERTY>"
            "<PROPERTY.ARRAY NAME=\"Bytes\" TYPE=\"uint8\"><VALUE.ARRAY><VALUE>0</VALUE><VALUE.NULL></VALUE.NULL>"
            "<VALUE>255</VALUE></VALUE.ARRAY></PROPERTY.ARRAY>"
            "<PROPERTY.ARRAY NAME=\"NoBytes\" TYPE=\"uint8\"><VALUE.ARRAY></VALUE.ARRAY></PROPERTY.ARRAY>"
            "<PROPERTY.ARRAY NAME=\"Texts\" TYPE=\"string\"><VALUE.ARRAY><VALUE>a\"b</VALUE><VALUE.NULL></VALUE.NULL>"
            "<VALUE></VALUE></VALUE.ARRAY></PROPERTY.ARRAY>"
            "<PROPERTY NAME=\"Lowest\" TYPE=\"sint64\"><VALUE>-9223372036854775808</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Highest\" TYPE=\"uint64\"><VALUE>18446744073709551615</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Yes\" TYPE=\"boolean\"><VALUE>TRUE</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"No\" TYPE=\"boolean\"><VALUE>FALSE</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Tenth\" TYPE=\"real32\"><VALUE>0.1</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Huge\" TYPE=\"real64\"><VALUE>1.0e+300</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Endless\" TYPE=\"real64\"><VALUE>INF</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Accent\" TYPE=\"char16\"><VALUE>\u00e9</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Moment\" TYPE=\"datetime\"><VALUE>20260131123456.000000+060</VALUE></PROPERTY>"
            "<PROPERTY NAME=\"Span\" TYPE=\"datetime\"><VALUE>00000001132312.000000:000</VALUE></PROPERTY>"
            "</INSTANCE></VALUE.OBJECT>\n");
}

TEST_F(CimXmlWriter, ReplacesWhatXmlCannotHold) {
  EXPECT_EQ(Xml(TType::kString, TCIMValue("a\uFFFE\uFFFF\u0085")),
            "<PROPERTY NAME=\"P\" TYPE=\"string\"><VALUE>a\uFFFD\uFFFD&#x85;</VALUE></PROPERTY>");
}

TEST_F(CimXmlWriter, WritesNoValueForATimeThatDoesNotExist) {
  EXPECT_EQ(
      Xml(TType::kDateTime, TCIMValue(TCIMDateTime(2026, 13, 1, 0, 0, 0, 0, 0))),
      "<PROPERTY NAME=\"P\" TYPE=\"datetime\"><!-- not a valid datetime: 20261301000000.000000+000 --></PROPERTY>");
}

TEST_F(CimXmlWriter, WritesReferencesByTheirParts) {
  EXPECT_EQ(ReferenceXml("KROSG_A.Key=\"a\\\"<\",N=5,B=true"),
            "<PROPERTY.REFERENCE NAME=\"P\" REFERENCECLASS=\"KROSG_Target\"><VALUE.REFERENCE>"
            "<INSTANCENAME CLASSNAME=\"KROSG_A\">"
            "<KEYBINDING NAME=\"Key\"><KEYVALUE VALUETYPE=\"string\">a\"&lt;</KEYVALUE></KEYBINDING>"
            "<KEYBINDING NAME=\"N\"><KEYVALUE VALUETYPE=\"numeric\">5</KEYVALUE></KEYBINDING>"
            "<KEYBINDING NAME=\"B\"><KEYVALUE VALUETYPE=\"boolean\">true</KEYVALUE></KEYBINDING>"
            "</INSTANCENAME></VALUE.REFERENCE></PROPERTY.REFERENCE>");
  EXPECT_EQ(ReferenceXml("//h/root/cimv2:KROSG_A"),
            "<PROPERTY.REFERENCE NAME=\"P\" REFERENCECLASS=\"KROSG_Target\"><VALUE.REFERENCE><CLASSPATH>"
            "<NAMESPACEPATH><HOST>h</HOST><LOCALNAMESPACEPATH><NAMESPACE NAME=\"root\"></NAMESPACE>"
            "<NAMESPACE NAME=\"cimv2\"></NAMESPACE></LOCALNAMESPACEPATH></NAMESPACEPATH>"
            "<CLASSNAME NAME=\"KROSG_A\"></CLASSNAME></CLASSPATH></VALUE.REFERENCE></PROPERTY.REFERENCE>");
}

TEST_F(CimXmlWriter, WritesAReferenceThatIsNotAPathAsAString) {
  EXPECT_EQ(ReferenceXml("no <path>"),
            "<PROPERTY NAME=\"P\" TYPE=\"string\"><VALUE>no &lt;path&gt;</VALUE></PROPERTY>");
}

TEST_F(CimXmlWriter, KeepsCommentsClosedAndWellFormed) {
  TResultSummary summary = Partial();
  summary.reasons[1].message = "--><X>\n---";
  const std::string text = Written(EOutputForm::kCimXml, {}, summary);
  EXPECT_NE(text.find("<!-- reason: KROSG_A: - -><X>\\n- - - -->\n"), std::string::npos) << text;
}

TEST_F(CimXmlWriter, HasTheCommentsOfMofWithoutLabels) {
  TDocument document = {Header(), {}, Complete()};
  document.header.source.simulated = true;
  document.header.run.labels = {{"rack", "7"}};
  const std::string text = Written(EOutputForm::kCimXml, document);
  EXPECT_EQ(text.substr(0, text.find("<!-- Instances")),
            "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
            "<!-- SIMULATED: lan:bmc0, not a real service processor -->\n");
  EXPECT_EQ(text.find("rack"), std::string::npos);
}

TEST_F(CimXmlWriter, NoTextLeavesItsComment) {
  const TDocument document = Hostile("--><X/>\n<!-- -\xff\x01]]>-");
  pugi::xml_document xml;
  ASSERT_TRUE(
      xml.load_string(Written(EOutputForm::kCimXml, document).c_str(), pugi::parse_default | pugi::parse_comments));
  EXPECT_FALSE(xml.select_node("//X"));
  EXPECT_EQ(xml.select_nodes("//INSTANCE").size(), 1U);
}

TEST_F(CimXmlWriter, SaysWhatIsMissingFromAnInstance) {
  TDocument document = {Header(), {{One(TType::kString, NullOf(TType::kString)), {}}}, Complete()};
  TInstanceFacts& facts = document.instances[0].second;
  facts.key = "KROSG_One/sp0/instance--1";
  facts.missing = {{"First", {.address = {}, .addresses = {}, .index = 84, .offset = {}}, {EHow::kShort, 1}}};
  EXPECT_NE(
      Written(EOutputForm::kCimXml, document)
          .find("<!-- KROSG_One/sp0/instance- -1 -->\n<!-- missing: First at index 84: 1 byte received -->\n<VALUE."),
      std::string::npos);
}

TEST(ObjectPath, ReadsEveryPart) {
  const auto path = ParseObjectPath("https://host:5989/root/cimv2:KROSG_A.Name=\"a,b=\\\\\",Count=-0x1F");
  ASSERT_TRUE(path);
  EXPECT_EQ(path->host, "host:5989");
  EXPECT_EQ(path->namespaces, (std::vector<std::string>{"root", "cimv2"}));
  EXPECT_EQ(path->className, "KROSG_A");
  ASSERT_EQ(path->keys.size(), 2U);
  EXPECT_EQ(path->keys[0].value, "a,b=\\");
  EXPECT_EQ(path->keys[1].value, "-0x1F");
  EXPECT_EQ(path->keys[1].type, EKeyType::kNumeric);
}

TEST(ObjectPath, RefusesEverythingElse) {
  for (const char* text :
       {"",   ".",  "A.",     "A.k",      "A.k=", "A.k=\"", "A.k=\"\\", "A.k=x", "A.k=1,", "A.k=1 ",    "A.=1",
        "1A", "//", "//host", "//host/A", ":A",   "a//b:A", "root:",    "A=",    "A=@x",   "A.k=\"v\"x"}) {
    EXPECT_FALSE(ParseObjectPath(text)) << text;
  }
}

}  // namespace
}  // namespace tests
