// Schemas with short texts that have large effects: each refers many times to something long. Reading them must still
// take linear time.
#pragma once

#include "tests/schema/schemashapes.h"
#include "tests/support/namespaces.h"

namespace tests {

/// "{ "a text", ... }" with 20 elements for each unit of `count`, and then `last`.
inline std::string LongList(int count, const std::string& last = "\"end\"") {
  return "{" + Repeated(20 * count, [](auto&) { return "\"a text\", "; }) + last + "}";
}

/// A qualifier with a long default that subclasses must not change, and a class with it on a property.
inline std::string FixedList(int count, const std::string& use) {
  return "qualifier Q : string[] = " + LongList(count) + ", scope(any), flavor(disableoverride, tosubclass);\n" +
         "class A { [" + use + "] string p; };\n";
}

inline std::string Overriding(int count, const std::string& use) {
  return Repeated(count, [&](auto& i) { return "class B" + i + " : A { [" + use + "] string p; };\n"; });
}

inline const std::vector<TSchemaShape> kSchemaAttacks = {
    {"one-default-said-again", [](int n) { return FixedList(n, "Q") + Overriding(n, "Q"); }},
    {"an-equal-value-said-again", [](int n) { return FixedList(n, "Q" + LongList(n)) + Overriding(n, "Q"); }},
    {"an-unequal-value-said-again",
     [](int n) { return FixedList(n, "Q" + LongList(n, "\"enD\"")) + Overriding(n, "Q"); }},
    {"a-short-value-for-a-long-one", [](int n) { return FixedList(n, "Q") + Overriding(n, "Q {\"x\"}"); }},
    {"equal-values-of-methods",
     [](int n) {
       return FixedList(n, "Q") + "class C { [Q" + LongList(n) + "] uint8 m([Q" + LongList(n) + "] uint8 a); };\n" +
              Repeated(n, [](auto& i) { return "class D" + i + " : C { [Q] uint8 m([Q] uint8 a); };\n"; });
     }},
    {"a-long-text-for-a-flag",
     [](int n) {
       // Qualifiers that the reader evaluates as booleans.
       const std::string type = " : string[] = " + LongList(n) + ", scope(any);\n";
       return "qualifier Association" + type + "qualifier Abstract" + type + "qualifier EmbeddedObject" + type +
              "[Association, Abstract] class A { [EmbeddedObject] string p; };\n" +
              Repeated(n, [](auto& i) { return "class B" + i + " : A {};\ninstance of B" + i + " { p = \"\"; };\n"; });
     }},
    {"a-long-name-of-an-embedded-class",
     [](int n) {
       return "qualifier EmbeddedInstance : string = \"" + std::string(static_cast<std::size_t>(200 * n), 'x') +
              "\", scope(any);\nclass A { [EmbeddedInstance] string p[]; };\n" + Repeated(n, [](auto& i) {
                return "class B" + i + " { [EmbeddedInstance] string p = \"\"; };\ninstance of A { p = {\"\"}; };\n";
              });
     }},
    {"many-embedded-texts-of-no-class",
     [](int n) {
       return "qualifier EmbeddedInstance : string = \"" + std::string(static_cast<std::size_t>(200 * n), 'x') +
              "\", scope(any);\nclass A { [EmbeddedInstance] string p[]; };\ninstance of A { p = {" +
              Repeated(n, [](auto&) { return "\"\", "; }) + "\"\"}; };\n";
     }},
    {"machine-types-of-a-delegate",
     [](int n) {
       return "qualifier SupportedMachineTypes : string[] = " + LongList(n) + ", scope(any);\n" +
              "[SupportedMachineTypes] class KROSG_MEMCTL_StatisticData {};\n" + Repeated(n, [](auto& i) {
                return "class B" + i + " : KROSG_MEMCTL_StatisticData {};\n[SupportedMachineTypes] class C" + i +
                       " : KROSG_MEMCTL_StatisticData {};\n";
              });
     }},
    {"names-of-one-hash",
     [](int n) {
       // Two-byte characters that differ in the bit that distinguishes upper and lower case in ASCII.
       std::string text;
       for (int i = 0; i < n; ++i) {
         std::string name;
         for (int bit = 0; bit < 12; ++bit) name += (i >> bit & 1) != 0 ? "\xC2\xA0" : "\xC2\x80";
         text += "qualifier N" + name + " : string, scope(any);\n";
       }
       return text;
     }},
    {"a-superclass-of-a-long-name",
     [](int n) {
       const std::string name = "A" + std::string(static_cast<std::size_t>(20 * n), 'x');
       return "class R {}; class " + name + " { string p; R REF r; };\n" + Repeated(n, [&](auto& i) {
                return "class B" + i + " : " + (i == "0" ? name : "B0") + " { uint8 p; string r; };\n";
              });
     }},
    {"findings-in-one-line",
     [](int n) {
       return "qualifier Q : string, scope(any); class A { " +
              Repeated(n, [](auto& i) { return "[X] string p" + i + "; "; }) + "};";
     }},
    {"needs-in-one-line",
     [](int n) {
       return "class KROSG_MEMCTL_StatisticData {}; class B : KROSG_MEMCTL_StatisticData { " +
              Repeated(n, [](auto& i) { return "string p" + i + "; "; }) + "};";
     }},
    {"inherited-qualifiers-of-methods",
     [](int n) {
       std::string text = Repeated(40, [](auto& i) {
         return "qualifier Q" + i + " : string, scope(any), flavor(disableoverride, tosubclass);\n";
       });
       text += "class A { [" + Repeated(39, [](auto& i) { return "Q" + i + ", "; }) + "Q39] uint8 m(); };\n";
       return text + Repeated(n, [](auto& i) { return "class B" + i + " : A { uint8 m(); };\n"; });
     }},
    {"aliases-of-one-long-class",
     [](int n) {
       const std::string name = "A" + std::string(static_cast<std::size_t>(20 * n), 'x');
       return "qualifier Association : boolean = false, scope(association); class " + name + " {};\n" +
              "[Association] class L { " + name + " REF a[]; " + name + " REF b; };\ninstance of " + name +
              " as $A {};\ninstance of L { a = {$A" + Repeated(n, [](auto&) { return ", $A"; }) + "}; };\n";
     }},
    {"includes-of-one-file",
     [](int n) { return Repeated(n, [](auto&) { return "#pragma include(\"shape.mof\")\n"; }); }},
    {"includes-of-no-file",
     [](int n) { return Repeated(n, [](auto& i) { return "#pragma include(\"none" + i + ".mof\")\n"; }); }},
};

}  // namespace tests
