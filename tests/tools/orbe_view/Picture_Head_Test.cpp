// What a page is told beside the values of a picture.
#include "pictures/Picture_Maker.h"

#include "Taken_Picture.h"

#include <gtest/gtest.h>

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
    return test::Taken_Picture(picture).head();
}

TEST(Picture_Head, TellsSumsOfMoreLinesThanAreRemembered) {
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

// By these a page knows which of its wishes it sees, and how far back it can go.
TEST(Picture_Head, TellsWhatIsShownAndWhatIsRemembered) {
    Made_Source source;
    const std::vector<std::int16_t> rows(recorder::channel_count * 600);
    source.m_histories.probe(0).append(Band::ap, 30'000, rows);
    source.m_histories.probe(0).append(Band::lfp, 2'500, rows);
    source.m_status.position = 30'600;
    Picture_Maker maker(source, false);
    View_Request request;
    request.seconds = 0.01;
    for (const Shown_Stream stream : {Shown_Stream::ap, Shown_Stream::lfp, Shown_Stream::adc}) {
        request.stream = stream;
        request.end = std::nullopt;
        const auto now = head_of(maker.make(request, 0, true));
        EXPECT_EQ(now.at("traces").at("end"), nullptr);
        EXPECT_EQ(now.at("spectrum").at("end"), nullptr);
        EXPECT_EQ(now.at("traces").at("seconds"), 0.01);
        EXPECT_EQ(now.at("traces").at("remembered"), stream == Shown_Stream::adc ? 0.0 : 1.0);
        request.end = 1.0123456789;
        const auto held = head_of(maker.make(request, 1, true));
        EXPECT_EQ(held.at("traces").at("end"), 1.0123456789);
        EXPECT_EQ(held.at("spectrum").at("end"), 1.0123456789);
    }
}

} // namespace

} // namespace Pelgar::ORBE::view
