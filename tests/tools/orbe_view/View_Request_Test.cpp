#include "pictures/View_Request.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace Pelgar::ORBE::view {

TEST(View_Request, IsReadAsThePageSaysIt) {
    const Page_Message message = parse_page_message(
        R"({"view": {"stream": "lfp", "port": 3, "first": 370, "count": 20, "selected": 383, "seconds": 0.5,)"
        R"( "columns": 640, "end": 12.5}})");
    ASSERT_TRUE(message.view);
    const View_Request expected{Shown_Stream::lfp, 3, 370, 14, 383, 0.5, 640, 12.5};
    EXPECT_EQ(*message.view, expected); // and no channel beyond the last
    EXPECT_FALSE(message.jump || message.plays || message.streams);
}

TEST(View_Request, HasTheUsualWhereThePageSaysNothing) {
    EXPECT_EQ(*parse_page_message(R"({"view": {}})").view, View_Request());
}

TEST(View_Request, ComesWithWhatIsToBeDone) {
    const Page_Message message =
        parse_page_message(R"({"jump": {"seconds": 7.25, "plays": false}, "plays": true, "streams": false})");
    ASSERT_TRUE(message.jump);
    EXPECT_EQ(message.jump->seconds, 7.25);
    EXPECT_FALSE(message.jump->plays);
    EXPECT_EQ(message.plays, true);
    EXPECT_EQ(message.streams, false);
}

TEST(View_Request, IsRefusedWithAReasonWhenItMakesNoSense) {
    for (const char* text : {"",
                             "{",
                             "[]",
                             "7",
                             "\"view\"",
                             "null",
                             R"({"view": 7})",
                             R"({"view": {"port": 0}})",
                             R"({"view": {"port": 5}})",
                             R"({"view": {"port": 1.5}})",
                             R"({"view": {"port": "1"}})",
                             R"({"view": {"first": -1}})",
                             R"({"view": {"first": 384}})",
                             R"({"view": {"count": 0}})",
                             R"({"view": {"count": 97}})",
                             R"({"view": {"selected": 384}})",
                             R"({"view": {"seconds": 0}})",
                             R"({"view": {"seconds": 31}})",
                             R"({"view": {"seconds": 1e999}})",
                             R"({"view": {"columns": 2001}})",
                             R"({"view": {"columns": 1e300}})",
                             R"({"view": {"end": -1}})",
                             R"({"view": {"stream": "all"}})",
                             R"({"view": {"else": 1}})",
                             R"({"jump": {}})",
                             R"({"jump": {"seconds": "1"}})",
                             R"({"jump": {"seconds": 1, "plays": 1}})",
                             R"({"plays": 1})",
                             R"({"streams": "no"})",
                             R"({"else": 1})"}) {
        EXPECT_THROW(parse_page_message(text), std::invalid_argument) << text;
    }
    EXPECT_THROW(parse_page_message(std::string(4000, '[')), std::invalid_argument);
}

} // namespace Pelgar::ORBE::view
