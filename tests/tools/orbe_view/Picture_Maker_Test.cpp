#include "pictures/Picture_Maker.h"

#include <gtest/gtest.h>

#include <cstring>

namespace Pelgar::ORBE::view {

namespace {

// A source that has what the test puts into it.
class Made_Source final : public A_Source {
public:
    const Histories& histories() const override { return m_histories; }

    Source_Status status() const override { return m_status; }

    Histories m_histories{{recorder::default_probe(1)}, true, 5.0, 100.0};
    Source_Status m_status;
};

nlohmann::json head_of(const Picture& picture) {
    std::uint32_t length = 0;
    std::memcpy(&length, picture.data(), sizeof(length));
    const auto* const text = picture.data() + sizeof(length);
    return nlohmann::json::parse(text, text + length);
}

TEST(Picture_Maker, TellsSumsOfMoreLinesThanAreRemembered) {
    Made_Source source;
    for (int number = 1; number <= 500; ++number) {
        Health health;
        health.streams[1].row_gaps = number == 1 ? 2.0 : 0.0;
        health.streams[1].wrong_tags = 1.0;
        health.streams[1].rate = 30000.0;
        source.m_histories.health().add(health);
    }
    const auto head = head_of(Picture_Maker(source, false).make({}, 0, true));
    EXPECT_EQ(head.at("health").size(), 240U);
    const nlohmann::json unknown_sums = {nullptr, nullptr, nullptr, nullptr, false};
    EXPECT_EQ(
        head.at("health_sums"),
        (nlohmann::json{
            unknown_sums, {2.0, nullptr, 500.0, nullptr, true}, unknown_sums, unknown_sums, unknown_sums}));
}

} // namespace

} // namespace Pelgar::ORBE::view
