#include "host/output/capturefile.h"

#include "host/base/caseinsensitive.h"
#include "host/base/hex.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

namespace {

std::string TextOf(const TInstance& instance, std::string_view property) {
  const TCIMValue* value = instance.Find(property);
  return value != nullptr && !value->IsNull() ? value->ToString(10) : std::string();
}

std::string TimeOf(const TInstance& instance, std::string_view property) {
  const TCIMValue* value = instance.Find(property);
  const bool isTime =
      value != nullptr && !value->IsNull() && !value->IsArray() && value->GetType() == TCIMValue::TCIMType::kDateTime;
  return isTime ? value->ToDateTime().ToIso8601() : std::string();
}

}  // namespace

std::optional<std::vector<std::uint8_t>> DecodeHexPairs(std::string_view text) {
  if (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  for (std::size_t i = 2; i < text.size(); i += 3) {
    if (text[i] != ' ') return std::nullopt;
  }
  THexPairs pairs = ParseHexPairs(text);
  const bool hasBlanksOnlyThere = text.empty() || pairs.bytes.size() * 3 == text.size() + 1;
  if (pairs.errorAt != std::string_view::npos || !hasBlanksOnlyThere) return std::nullopt;
  return std::move(pairs.bytes);
}

std::optional<TCaptureFile> CaptureFileOf(const TInstance& instance) {
  if (!EqualNames(instance.Class().Name(), CollectorProfile::kCaptureClass)) return std::nullopt;
  const TCIMValue* content = instance.Find(kCaptureDataProperty);
  if (content == nullptr || content->IsNull() || content->IsArray()) return std::nullopt;
  auto data = DecodeHexPairs(content->ToString(10));
  if (!data) return std::nullopt;
  return TCaptureFile{TextOf(instance, "FileName"), TextOf(instance, "SourceNode"), TextOf(instance, "RecordID"),
                      TimeOf(instance, "MessageTimestamp"), std::move(*data)};
}

}  // namespace velhost
