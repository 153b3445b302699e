#include "host/base/sha256.h"

#include "host/base/digits.h"

namespace velhost {

TSha256::TSha256() : context_() { sha256_init(&context_); }

void TSha256::Add(std::string_view bytes) {
  sha256_update(&context_, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
}

std::array<std::uint8_t, SHA256_DIGEST_SIZE> TSha256::Digest() const {
  sha256_ctx finished = context_;  // taking the digest resets the context
  std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
  sha256_digest(&finished, digest.size(), digest.data());
  return digest;
}

std::string TSha256::HexDigest() const {
  std::string text;
  for (const std::uint8_t byte : Digest()) text += HexPair(byte);
  return text;
}

}  // namespace velhost
