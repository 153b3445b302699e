#include "host/output/capturefile.h"

#include "host/base/caseinsensitive.h"
#include "host/profile/collectorprofile.h"

namespace velhost {

namespace {

int DigitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = FoldCase(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

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
  std::vector<std::uint8_t> bytes;
  if (text.empty()) return bytes;
  if (text.size() % 3 != 2) return std::nullopt;
  bytes.reserve(text.size() / 3 + 1);
  for (std::size_t i = 0; i < text.size(); i += 3) {
    const int high = DigitOf(text[i]);
    const int low = DigitOf(text[i + 1]);
    if (high < 0 || low < 0 || (i + 2 < text.size() && text[i + 2] != ' ')) return std::nullopt;
    bytes.push_back(static_cast<std::uint8_t>(high * 16 + low));
  }
  return bytes;
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
