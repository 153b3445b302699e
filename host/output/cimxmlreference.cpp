#include "host/output/cimxmlreference.h"

#include <string>

#include "host/output/xmltext.h"

namespace velhost {

namespace {

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

// The element that holds a namespace and a name, by what the path has.
const char* PathElement(const TObjectPath& path) {
  if (path.host.empty()) return path.isInstance ? "LOCALINSTANCEPATH" : "LOCALCLASSPATH";
  return path.isInstance ? "INSTANCEPATH" : "CLASSPATH";
}

}  // namespace

void AppendReference(pugi::xml_node parent, const TObjectPath& path) {
  pugi::xml_node place = parent.append_child("VALUE.REFERENCE");
  if (!path.namespaces.empty()) {
    place = place.append_child(PathElement(path));
    AppendNamespace(place, path);
  }
  if (path.isInstance) return AppendInstanceName(place, path);
  AppendNamed(place, "CLASSNAME", path.className);
}

}  // namespace velhost
