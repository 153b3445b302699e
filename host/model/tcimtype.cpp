#include <array>
#include <string>
#include <string_view>

#include "host/base/names.h"
#include "host/model/failures.h"
#include "nkrovel20/tcimvalue.h"
#include "nkrovel20/tvelexception.h"

namespace NKROVEL20 {

using namespace velhost;

namespace {

struct TTypeName {
  TCIMValue::TCIMType::ECIMType code;
  std::string_view name;
};

using TType = TCIMValue::TCIMType;

constexpr std::array<TTypeName, 16> kTypeNames = {{
    {TType::kNone, ""},
    {TType::kBoolean, "boolean"},
    {TType::kUint8, "uint8"},
    {TType::kSint8, "sint8"},
    {TType::kUint16, "uint16"},
    {TType::kSint16, "sint16"},
    {TType::kUint32, "uint32"},
    {TType::kSint32, "sint32"},
    {TType::kUint64, "uint64"},
    {TType::kSint64, "sint64"},
    {TType::kReal32, "real32"},
    {TType::kReal64, "real64"},
    {TType::kChar16, "char16"},
    {TType::kString, "string"},
    {TType::kDateTime, "datetime"},
    {TType::kReference, "ref"},
}};

TType::ECIMType CodeOf(const std::string& name) {
  for (const TTypeName& entry : kTypeNames) {
    if (entry.code != TType::kNone && EqualNames(entry.name, name)) return entry.code;
  }
  ThrowHostFailure(TVELStatusCode::kInvalidParameter, "\"" + name + "\" is not a CIM type");
}

}  // namespace

TCIMValue::TCIMType::TCIMType(const std::string& name) : code_(CodeOf(name)) {}

std::string TCIMValue::TCIMType::ToString() const {
  for (const TTypeName& entry : kTypeNames) {
    if (entry.code == code_) return std::string(entry.name);
  }
  return {};
}

}  // namespace NKROVEL20
