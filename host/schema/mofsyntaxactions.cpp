// The parser's actions: what the rules of the grammar add to the result.
#include <charconv>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "host/schema/mofscan.h"
#include "host/schema/schemalimits.h"

namespace velhost::Mof {

namespace {

template <typename T>
std::uint32_t Append(std::vector<T>& members, const T& member) {
  members.push_back(member);
  return static_cast<std::uint32_t>(members.size() - 1);
}

}  // namespace

TArraySuffix TScan::ArraySize(TSpan number) {
  const std::string_view text = Text(number);
  std::uint32_t size = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size);
  if (error != std::errc() || end != text.data() + text.size() || text[0] == '0' || size > 0x7FFFFFFF) {
    Error(number.begin, "found " + Quoted(text) + ", expected an array size from 1 to 2147483647");
    size = 0;
  }
  return {true, size};
}

std::uint32_t TScan::JoinFlavors(std::uint32_t flavors, std::uint32_t flavor, TSpan word) {
  constexpr std::uint32_t kOverride = kEnableOverride | kDisableOverride;
  constexpr std::uint32_t kPropagation = kToSubclass | kRestricted;
  const std::uint32_t both = flavors | flavor;
  const bool override = (both & kOverride) == kOverride;
  if (!override && (both & kPropagation) != kPropagation) return both;
  Error(word.begin, "found " + Quoted(Text(word)) + " together with its opposite, expected " +
                        (override ? "EnableOverride or DisableOverride" : "ToSubclass or Restricted"));
  return flavors;
}

TInitializer TScan::Scalar(const TLiteral& literal) {
  Charge(literal.span.begin, kCostOfLiteral);
  return {true, false, {Append(file_.literals, literal), 1}, literal.span};
}

void TScan::AddFeature(TRange qualifiers, TTypeName type, TSpan name, TArraySuffix array, TInitializer value) {
  Charge(name.begin, kCostOfProperty);
  file_.features.push_back({false, qualifiers, type, name, array, value, {0, 0}});
}

void TScan::AddMethod(TRange qualifiers, TTypeName type, TSpan name, TRange parameters) {
  Charge(name.begin, kCostOfMethod);
  file_.features.push_back({true, qualifiers, type, name, {false, 0}, {false, false, {0, 0}, {0, 0}}, parameters});
}

void TScan::AddParameter(TRange qualifiers, TTypeName type, TSpan name, TArraySuffix array) {
  Charge(name.begin, kCostOfParameter);
  file_.parameters.push_back({false, qualifiers, type, name, array, {false, false, {0, 0}, {0, 0}}, {0, 0}});
}

void TScan::AddQualifier(TSpan name, TTypeName type, TArraySuffix array, TInitializer value, std::uint32_t scope,
                         std::uint32_t flavors) {
  Charge(name.begin, kCostOfQualifierDeclaration);
  const TQualifierSyntax declaration = {name, type, array, value, scope, flavors};
  file_.productions.push_back({EProduction::kQualifier, Append(file_.qualifiers, declaration)});
}

void TScan::AddClass(TRange qualifiers, TSpan name, TSpan superClass, TRange features) {
  Charge(name.begin, kCostOfClass);
  const TClassSyntax declaration = {qualifiers, name, superClass, features};
  file_.productions.push_back({EProduction::kClass, Append(file_.classes, declaration)});
}

void TScan::AddInstance(TRange qualifiers, TSpan className, TSpan alias, TRange assignments) {
  Charge(className.begin, kCostOfInstance);
  const TInstanceSyntax declaration = {qualifiers, className, alias, assignments};
  file_.productions.push_back({EProduction::kInstance, Append(file_.instances, declaration)});
}

void TScan::AddPragma(TSpan name, const TLiteral& parameter) {
  Charge(name.begin, kCostOfPragma);
  file_.productions.push_back({EProduction::kPragma, Append(file_.pragmas, TPragmaSyntax{name, parameter})});
}

void TScan::AddUse(TSpan name, TInitializer value, std::uint32_t flavors) {
  Charge(name.begin, kCostOfQualifier);
  file_.uses.push_back({name, value, flavors});
}

void TScan::AddAssignment(TRange qualifiers, TSpan name, TInitializer value) {
  Charge(name.begin, kCostOfAssignment);
  file_.assignments.push_back({qualifiers, name, value});
}

}  // namespace velhost::Mof
