// Hashes and identifiers.
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "support/sha256.h"
#include "support/uuid.h"

namespace morvane {
namespace {

using std::string;

string hashOf(std::string_view bytes) {
    Sha256 hash;
    hash.update(bytes);
    return hash.finish();
}

// The vectors of FIPS 180-2.
TEST(Sha256, KnownAnswers) {
    EXPECT_EQ(hashOf(""), "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
    EXPECT_EQ(hashOf("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(hashOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq"),
              "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1");
    EXPECT_EQ(hashOf(string(1'000'000, 'a')),
              "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0");
}

TEST(Sha256, PiecesGiveTheSameAndAContextIsUsedAgain) {
    const string text(100'003, 'x');
    Sha256 hash;
    for (std::size_t size : {1U, 63U, 64U, 65U, 4096U}) {
        hash.reset();
        for (std::size_t offset = 0; offset < text.size(); offset += size)
            hash.update(std::string_view(text).substr(offset, size));
        EXPECT_EQ(hash.finish(), hashOf(text)) << size;
    }
    hash.reset();
    hash.update("abc");
    Sha256 moved(std::move(hash));
    EXPECT_EQ(moved.finish(), hashOf("abc"));
}

TEST(Sha256, ManyThreadsAtOnce) {
    std::vector<string> results(4);
    std::vector<std::thread> threads;
    for (string& result : results)
        threads.emplace_back([&result] { result = hashOf("abc"); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(results, std::vector<string>(4, hashOf("abc")));
}

TEST(Uuid, IsRandomVersionFour) {
    std::set<string> seen;
    for (int count = 0; count < 1000; ++count) {
        const string uuid = newUuid();
        ASSERT_EQ(uuid.size(), 36U);
        EXPECT_EQ(parseUuid(uuid), uuid);
        EXPECT_EQ(uuid[14], '4');
        EXPECT_NE(string("89AB").find(uuid[19]), string::npos);
        seen.insert(uuid);
    }
    EXPECT_EQ(seen.size(), 1000U);
}

TEST(Uuid, ReadsEitherCaseAndNothingElse) {
    const string canonical = "3F2504E0-4F89-41D3-9A0C-0305E82C3301";
    EXPECT_EQ(parseUuid(canonical), canonical);
    EXPECT_EQ(parseUuid("3f2504e0-4f89-41d3-9a0c-0305e82c3301"), canonical);
    for (const char* text :
         {"", "3F2504E0-4F89-41D3-9A0C-0305E82C330", "3F2504E0-4F89-41D3-9A0C-0305E82C33011",
          "3F2504E04F89-41D3-9A0C-0305E82C33012-", "3G2504E0-4F89-41D3-9A0C-0305E82C3301",
          "{3F2504E0-4F89-41D3-9A0C-0305E82C33}", "3F2504E0 4F89 41D3 9A0C 0305E82C3301"})
        EXPECT_FALSE(parseUuid(text).has_value()) << text;
}

}  // namespace
}  // namespace morvane
