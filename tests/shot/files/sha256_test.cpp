// SPDX-License-Identifier: BSD-3-Clause
#include "shot/files/sha256.h"

#include <gtest/gtest.h>

#include <string>

using namespace cornerpin;

namespace {

std::string digestOf(const std::string& text) {
  Sha256 digest;
  digest.add(text.data(), text.size());
  return digest.hex();
}

}  // namespace

// The examples of the standard, FIPS 180.
TEST(Sha256, IsThatOfTheStandard) {
  EXPECT_EQ(digestOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
  EXPECT_EQ(digestOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
  EXPECT_EQ(digestOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
            "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
  EXPECT_EQ(digestOf(std::string(1000000, 'a')),
            "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, TakesPiecesAndGoesOn) {
  Sha256 digest;
  digest.add("a", 1);
  digest.add("", 0);
  digest.add("bc", 2);
  const std::string abc = digestOf("abc");
  EXPECT_EQ(digest.hex(), abc);
  EXPECT_EQ(digest.hex(), abc);
  digest.add("d", 1);
  EXPECT_EQ(digest.hex(), digestOf("abcd"));
}

// The standard's digest of "abc" as another program writes its bytes.
TEST(Sha256, ComesInBase64) {
  Sha256 digest;
  digest.add("abc", 3);
  EXPECT_EQ(digest.base64(), "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=");
}
