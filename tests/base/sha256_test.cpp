#include "host/base/sha256.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "tests/support/namespaces.h"

namespace tests {
namespace {

std::string Sha256Of(std::string_view text) {
  TSha256 hash;
  hash.Add(text);
  return hash.HexDigest();
}

// The examples of FIPS 180-4, and the empty text.
TEST(Sha256, GivesThePublishedHashes) {
  EXPECT_EQ(Sha256Of(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(Sha256Of("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(Sha256Of("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(Sha256Of(std::string(1000000, 'a')), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, DoesNotDependOnWhereTheTextIsSplit) {
  const std::string text(130, 'x');  // longer than two blocks of 64 bytes
  for (std::size_t split = 0; split <= text.size(); ++split) {
    TSha256 hash;
    hash.Add(std::string_view(text).substr(0, split));
    hash.Add(std::string_view(text).substr(split));
    EXPECT_EQ(hash.HexDigest(), Sha256Of(text)) << split;
  }
}

TEST(Sha256, GivesTheHashAsBytesToo) {
  TSha256 hash;
  hash.Add("abc");
  const auto digest = hash.Digest();
  EXPECT_EQ(digest.size(), 32U);
  EXPECT_EQ(digest.front(), 0xBA);
  EXPECT_EQ(digest.back(), 0xAD);
}

TEST(Sha256, CountsBytesThatAreNotText) {
  EXPECT_EQ(Sha256Of(std::string_view("\0", 1)), "6e340b9cffb37a989ca544e6bb780a2c78901d3fb33738768511a30617afa01d");
}

TEST(Sha256, GoesOnAfterADigest) {
  TSha256 hash;
  hash.Add("ab");
  EXPECT_EQ(hash.HexDigest(), Sha256Of("ab"));
  hash.Add("c");
  EXPECT_EQ(hash.HexDigest(), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
}

}  // namespace
}  // namespace tests
