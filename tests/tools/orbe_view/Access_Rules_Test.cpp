#include "web/Access_Rules.h"

#include <gtest/gtest.h>

namespace Pelgar::ORBE::view {

TEST(Access_Rules, AllowThisMachineAndAddressesInNumbers) {
    const Access_Rules rules(8384, "");
    EXPECT_TRUE(rules.is_host_allowed("127.0.0.1:8384"));
    EXPECT_TRUE(rules.is_host_allowed("localhost:8384"));
    EXPECT_TRUE(rules.is_host_allowed("[::1]:8384"));
    EXPECT_TRUE(rules.is_host_allowed("192.168.7.20:8384"));
}

TEST(Access_Rules, RefuseNamesThatMayLeadHereAndOtherPorts) {
    const Access_Rules rules(8384, "");
    for (const char* host :
         {"", "evil.example:8384", "127.0.0.1.evil.example:8384", "localhost.evil.example:8384", "127.0.0.1",
          "127.0.0.1:80", "127.0.0.1:8384.evil.example", "::1:8384", "[evil]:8384", "[127.0.0.1]:8384",
          "[]:8384", ":8384", "localhost:", "127.0.0.1:08384"}) {
        EXPECT_FALSE(rules.is_host_allowed(host)) << host;
    }
}

TEST(Access_Rules, LeaveThePortOutWhereBrowsersDo) {
    const Access_Rules rules(80, "");
    EXPECT_TRUE(rules.is_host_allowed("127.0.0.1"));
    EXPECT_TRUE(rules.is_host_allowed("localhost"));
    EXPECT_FALSE(rules.is_host_allowed("evil.example"));
}

TEST(Access_Rules, AllowThePageItselfAndWhatIsNoPage) {
    const Access_Rules rules(8384, "");
    EXPECT_TRUE(rules.is_origin_allowed("", "127.0.0.1:8384"));
    EXPECT_TRUE(rules.is_origin_allowed("http://127.0.0.1:8384", "127.0.0.1:8384"));
    EXPECT_FALSE(rules.is_origin_allowed("http://localhost:8384", "127.0.0.1:8384"));
    EXPECT_FALSE(rules.is_origin_allowed("http://evil.example", "127.0.0.1:8384"));
    EXPECT_FALSE(rules.is_origin_allowed("null", "127.0.0.1:8384"));
}

TEST(Access_Rules, AskForTheWholeToken) {
    const Access_Rules rules(8384, "0123abcd");
    EXPECT_TRUE(rules.is_token_right("/?token=0123abcd"));
    EXPECT_TRUE(rules.is_token_right("/data?a=b&token=0123abcd&c"));
    for (const char* target : {"/", "/?token=", "/?token=0123abc", "/?token=0123abcd0", "/?Token=0123abcd",
                               "/token=0123abcd", "/?xtoken=0123abcd"}) {
        EXPECT_FALSE(rules.is_token_right(target)) << target;
    }
    EXPECT_TRUE(Access_Rules(8384, "").is_token_right("/"));
}

TEST(Access_Rules, MakeLongTokensThatDiffer) {
    const std::string token = make_token();
    EXPECT_EQ(token.size(), 32U);
    EXPECT_EQ(token.find_first_not_of("0123456789abcdef"), std::string::npos);
    EXPECT_NE(token, make_token());
}

} // namespace Pelgar::ORBE::view
