// Schemas that each grow in one direction, to test that reading them takes linear time.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/support/namespaces.h"

namespace tests {

struct TSchemaShape {
  const char* name;
  std::function<std::string(int)> make;  ///< a schema of that size
};

inline std::string Repeated(int count, const std::function<std::string(const std::string&)>& part) {
  std::string text;
  for (int i = 0; i < count; ++i) text += part(std::to_string(i));
  return text;
}

inline const std::vector<TSchemaShape> kSchemaShapes = {
    {"classes",
     [](int n) { return Repeated(n, [](auto& i) { return "class A" + i + " { string p; uint8 q = 1; };\n"; }); }},
    {"deep-inheritance",
     [](int n) {
       // Chains of 40 classes, each of which overrides a property and a method and adds one of each.
       std::string text = "qualifier Override : string, scope(any); class R { string p; uint8 m(); };\n";
       for (int i = 0; i < n; ++i) {
         const std::string above = i % 40 == 0 ? "R" : "A" + std::to_string(i - 1);
         text += "class A" + std::to_string(i) + " : " + above +
                 " { [Override(\"p\")] string p; [Override(\"m\")] uint8 m(); string q" + std::to_string(i % 40) +
                 "; };\n";
       }
       return text;
     }},
    {"subclass-before-superclass",
     [](int n) {
       std::string text;
       for (int i = n; i > 0; --i) {
         text += "class A" + std::to_string(i) + (i % 40 == 0 ? "" : " : A" + std::to_string(i - 1)) + " {};\n";
       }
       return text + "class A0 {};";
     }},
    {"properties-of-one-class",
     [](int n) { return "class A {" + Repeated(n, [](auto& i) { return "string p" + i + ";\n"; }) + "};"; }},
    {"methods-of-one-class",
     [](int n) {
       const auto methods = [n](const char* prefix) {
         return prefix + Repeated(n, [](auto& i) { return "uint8 m" + i + "(string a, uint8 b);\n"; }) + "};\n";
       };
       return methods("class A {") + methods("class B : A {");
     }},
    {"parameters-of-one-method",
     [](int n) {
       return "class A { uint8 m(string p" + Repeated(n, [](auto& i) { return ", string p" + i; }) + "); };";
     }},
    {"qualifier-declarations",
     [](int n) { return Repeated(n, [](auto& i) { return "qualifier Q" + i + " : string = null, scope(any);\n"; }); }},
    {"qualifiers-of-elements",
     [](int n) {
       std::string text = Repeated(40, [](auto& i) { return "qualifier Q" + i + " : string = null, scope(any);\n"; });
       const std::string list = Repeated(39, [](auto& i) { return ", Q" + i + "(\"value\")"; });
       return text + Repeated(n, [&](auto& i) {
                return "class A" + i + " { [Q39(\"x\")" + list + "] string p; [Q39(\"x\")" + list + "] uint8 m(); };\n";
              });
     }},
    {"syntax-errors", [](int n) { return Repeated(n, [](auto&) { return "class A { string 5; uint8 p = ; };\n"; }); }},
    {"unknown-names",
     [](int n) {
       return Repeated(n, [](auto& i) {
         return "[Qual" + i + "] class Name" + i + " : Nmae" + i + " { Other" + i + " REF r; };\n";
       });
     }},
    {"wrong-values",
     [](int n) { return "class A {" + Repeated(n, [](auto& i) { return "uint8 p" + i + " = 256;\n"; }) + "};"; }},
    {"errors-in-one-line", [](int n) { return "class A { " + Repeated(n, [](auto&) { return "@ "; }) + "};"; }},
    {"long-string",
     [](int n) { return "class A { string p = \"" + Repeated(n, [](auto&) { return "a text \\n"; }) + "\"; };"; }},
    {"pieces-of-a-string",
     [](int n) { return "class A { string p = " + Repeated(n, [](auto&) { return "\"piece\"\n"; }) + "; };"; }},
    {"elements-of-an-array",
     [](int n) { return "class A { uint8 p[] = {0" + Repeated(n, [](auto&) { return ", 1"; }) + "}; };"; }},
    {"classes-that-hide-each-other",
     [](int n) {
       return "qualifier SupportedMachineTypes : string[], scope(class);\nclass KROSG_MEMCTL_StatisticData {};\n" +
              Repeated(n, [](auto& i) {
                return "[SupportedMachineTypes{\"model " + i + "\", \"6203\"}]\nclass A" + i +
                       " : KROSG_MEMCTL_StatisticData {};\n";
              });
     }},
    {"registers-of-one-class",
     [](int n) {
       return "qualifier Index : uint16, scope(property);\nclass KROSG_MEMCTL_StatisticData {};\n" +
              ("class A : KROSG_MEMCTL_StatisticData {\n" + Repeated(n,
                                                                     [](auto& i) {
                                                                       return "[Index(" + i + ")] uint8 a" + i +
                                                                              "[]; [Index(1)] uint8 b" + i + "[];\n";
                                                                     })) +
              "};";
     }},
    {"unread-classes",
     [](int n) {
       // Names of one length: how long a search for the nearest name takes depends on it.
       return "qualifier Index : uint16, scope(property);\n" + Repeated(n, [](auto& i) {
                return "class KROSG_T4_MEMCTL_StatisticData" + std::string(6 - i.size(), '0') + i +
                       " { [Index(1)] uint8 a[]; };\n";
              });
     }},
    {"comments", [](int n) { return Repeated(n, [](auto&) { return "// a line\n/* a * block ** */"; }); }},
    {"aliases",
     [](int n) {
       return "qualifier Association : boolean = false, scope(association); class A { string p; };\n"
              "[Association] class L { A REF a; A REF b; };\n" +
              Repeated(n, [](auto& i) { return "instance of A as $A" + i + " { p = \"x\"; };\n"; }) +
              Repeated(n, [](auto& i) { return "instance of L { a = $A" + i + "; b = $A0; };\n"; });
     }},
    {"unknown-aliases",
     [](int n) {
       return "qualifier Association : boolean = false, scope(association); class A { string p; };\n"
              "[Association] class L { A REF a; A REF b; };\n" +
              Repeated(n, [](auto& i) { return "instance of L { a = $Some" + i + "; };\n"; });
     }},
    {"embedded-instances",
     [](int n) {
       return "qualifier EmbeddedInstance : string, scope(any); class A { uint8 n; };\n"
              "class H { [EmbeddedInstance(\"A\")] string i[]; };\ninstance of H { i = { NULL" +
              Repeated(n, [](auto&) { return ",\n\"instance of A \" \"{ n = 1; };\""; }) + "}; };";
     }},
    {"errors-in-an-embedded-text",
     [](int n) {
       return "qualifier EmbeddedObject : boolean, scope(any); class H { [EmbeddedObject] string o; };\n"
              "instance of H { o = \"class A {" +
              Repeated(n, [](auto&) { return "string \\\"x\\\";"; }) + "};\"; };";
     }},
};

}  // namespace tests
