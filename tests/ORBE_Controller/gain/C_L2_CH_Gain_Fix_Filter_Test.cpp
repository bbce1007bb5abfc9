#include "gain/C_L2_CH_Gain_Fix_Filter.h"

#include "Gain_Calibration_File.h"
#include "Invalid_Subscript.h"
#include "gain/Gain_Product.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <filesystem>
#include <ios>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

using Pelgar::ORBE::apply_gain;
using Pelgar::ORBE::C_L2_CH_Gain_Fix_Filter;
using Pelgar::ORBE::gain_product;
using Pelgar::ORBE::demux::I_L2_Demux_CH_Results;
using Pelgar::ORBE::test::expect_invalid_subscript;
using Pelgar::ORBE::test::Gain_Calibration_File;
using Block = std::array<std::uint16_t, 384>;

class Block_Keeper : public I_L2_Demux_CH_Results {
public:
    void publish_ap_ch_data(std::uint16_t (&values)[384]) override { ap.push_back(std::to_array(values)); }

    void publish_lp_ch_data(std::uint16_t (&values)[384]) override { lfp.push_back(std::to_array(values)); }

    std::vector<Block> ap;
    std::vector<Block> lfp;
};

class GainFilter : public testing::Test {
protected:
    GainFilter() { m_filter.set_listener(m_keeper); }

    Block ap(std::uint16_t value) {
        std::uint16_t values[384];
        std::fill(std::begin(values), std::end(values), value);
        m_filter.publish_ap_ch_data(values);
        return m_keeper->ap.back();
    }

    Block lfp(std::uint16_t value) {
        std::uint16_t values[384];
        std::fill(std::begin(values), std::end(values), value);
        m_filter.publish_lp_ch_data(values);
        return m_keeper->lfp.back();
    }

    bool load(const Gain_Calibration_File& file) {
        file.write();
        return m_filter.load_gain_calibration(file.path.c_str());
    }

    static Gain_Calibration_File constant(const std::string& factor) {
        Gain_Calibration_File file;
        file.factor = [factor](std::size_t, std::size_t) { return factor; };
        return file;
    }

    std::shared_ptr<Block_Keeper> m_keeper = std::make_shared<Block_Keeper>();
    C_L2_CH_Gain_Fix_Filter m_filter;
};

Block all(std::uint16_t value) {
    Block block;
    block.fill(value);
    return block;
}

std::string end_of_file_text() {
    std::istringstream empty;
    try {
        empty.exceptions(std::ios::eofbit);
        empty.get();
    } catch (const std::ios::failure& failure) {
        return failure.what();
    }
    return {};
}

TEST_F(GainFilter, WithoutALoadedFileBlocksPassUnchanged) {
    m_filter.set_channel_gain_codes(0, 7, 7);
    m_filter.set_channel_bank(0, 1);
    EXPECT_EQ(ap(1001), all(1001));
    EXPECT_EQ(lfp(65535), all(65535));
}

TEST_F(GainFilter, ProductIsTruncatedTowardZero) {
    ASSERT_TRUE(load(constant("1.5")));
    EXPECT_EQ(ap(1001), all(1501));
    EXPECT_EQ(lfp(1001), all(1501));
    ASSERT_TRUE(load(constant("0.999")));
    EXPECT_EQ(ap(1), all(0));
    EXPECT_EQ(lfp(1), all(0));
}

TEST_F(GainFilter, ValuesAreReadAsUnsigned) {
    ASSERT_TRUE(load(constant("0.5")));
    EXPECT_EQ(ap(65534), all(32767));
}

TEST_F(GainFilter, CorrectsInPlace) {
    ASSERT_TRUE(load(constant("2")));
    std::uint16_t values[384] = {21};
    m_filter.publish_ap_ch_data(values);
    EXPECT_EQ(values[0], 42);
}

TEST_F(GainFilter, EveryGainCodeAndElectrodeHasItsOwnFactor) {
    // Factors that are exact in a float, so that each product names its code and its electrode.
    Gain_Calibration_File file;
    file.factor = [](std::size_t electrode, std::size_t k) { return std::to_string(electrode + 1000 * k); };
    ASSERT_TRUE(load(file));
    for (std::uint16_t code = 0; code < 8; ++code) {
        for (std::uint16_t bank = 0; bank < 3; ++bank) {
            const std::uint32_t channels = bank == 2 ? 192 : 384;
            for (std::uint32_t c = 0; c < channels; ++c) {
                m_filter.set_channel_bank(c, bank);
                m_filter.set_channel_gain_codes(c, code, static_cast<std::uint16_t>(7 - code));
            }
            const Block ap_block = ap(1);
            const Block lfp_block = lfp(1);
            for (std::uint32_t c = 0; c < channels; ++c) {
                ASSERT_EQ(ap_block[c], bank * 384U + c + 1000U * code) << "channel " << c;
                ASSERT_EQ(lfp_block[c], bank * 384U + c + 1000U * (8U + 7U - code)) << "channel " << c;
            }
        }
    }
}

TEST_F(GainFilter, BothLineEndsAreRead) {
    for (const std::string line_end : {"\n", "\r\n"}) {
        Gain_Calibration_File file = constant("3");
        file.line_end = line_end;
        EXPECT_TRUE(load(file));
        EXPECT_EQ(ap(2), all(6));
    }
}

TEST_F(GainFilter, LinesBeyondTheLastElectrodeAreNotRead) {
    Gain_Calibration_File file = constant("2");
    file.line_count = 961;
    file.factor = [](std::size_t electrode, std::size_t) { return electrode < 960 ? "2" : "not a number"; };
    EXPECT_TRUE(load(file));
}

TEST_F(GainFilter, LoadTellsWhatItDoes) {
    testing::internal::CaptureStdout();
    ASSERT_TRUE(load(constant("1")));
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Loading gain data from file : gain.csv\n"
              "Gain data loaded.\nCreating default 1:1 mapping for the shank pixels ( Bank A Selection )\n");
}

TEST_F(GainFilter, LoadPutsEveryChannelOnBankZero) {
    Gain_Calibration_File file;
    file.factor = [](std::size_t electrode, std::size_t) { return electrode < 384 ? "2" : "5"; };
    m_filter.set_channel_bank(7, 1);
    ASSERT_TRUE(load(file));
    EXPECT_EQ(ap(10), all(20));
    m_filter.set_channel_bank(7, 1);
    EXPECT_EQ(ap(10)[7], 50);
    EXPECT_EQ(ap(10)[8], 20);
}

TEST_F(GainFilter, MissingFileChangesNothing) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(m_filter.load_gain_calibration("nowhere.csv"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "file open error\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Loading gain data from file : nowhere.csv\n");
    EXPECT_EQ(ap(1001), all(1001));
}

TEST_F(GainFilter, MissingFileKeepsWhatWasLoaded) {
    Gain_Calibration_File file;
    file.factor = [](std::size_t electrode, std::size_t) { return electrode < 384 ? "2" : "5"; };
    ASSERT_TRUE(load(file));
    m_filter.set_channel_bank(7, 1);
    EXPECT_FALSE(m_filter.load_gain_calibration("nowhere.csv"));
    EXPECT_EQ(ap(10)[7], 50);
    EXPECT_EQ(ap(10)[8], 20);
}

TEST_F(GainFilter, TooFewLinesFailWithTheEndOfFile) {
    Gain_Calibration_File file = constant("2");
    file.line_count = 959;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(load(file));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception caught while loading gain data : " + end_of_file_text());
    EXPECT_EQ(ap(1001), all(1001)) << "a failed first load leaves the filter unloaded";
}

TEST_F(GainFilter, LastLineNeedsItsLineEnd) {
    Gain_Calibration_File file = constant("2");
    file.last_line_end = false;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(load(file));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception caught while loading gain data : " + end_of_file_text());
}

TEST_F(GainFilter, EmptyFileFails) {
    std::ofstream("gain.csv").close();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(m_filter.load_gain_calibration("gain.csv"));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception caught while loading gain data : " + end_of_file_text());
}

TEST_F(GainFilter, FieldThatIsNoNumberFails) {
    Gain_Calibration_File file;
    file.factor = [](std::size_t electrode, std::size_t k) { return electrode == 3 && k == 9 ? "abc" : "2"; };
    testing::internal::CaptureStderr();
    EXPECT_FALSE(load(file));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception caught while loading gain data : invalid stof argument");
}

TEST_F(GainFilter, FieldOutOfFloatRangeFails) {
    Gain_Calibration_File file;
    file.factor = [](std::size_t electrode, std::size_t k) {
        return electrode == 3 && k == 9 ? "1e99" : "2";
    };
    testing::internal::CaptureStderr();
    EXPECT_FALSE(load(file));
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "Exception caught while loading gain data : stof argument out of range");
}

TEST_F(GainFilter, HeaderWithABlankLeavesItsRestToTheFirstField) {
    // The word after the blank ends up in the electrode field of the first line, which nothing looks at.
    Gain_Calibration_File file = constant("2");
    file.header = "probe 1";
    EXPECT_TRUE(load(file));
    EXPECT_EQ(ap(10), all(20));
}

TEST_F(GainFilter, FailedLaterLoadKeepsItLoadedWithTheFactorsReadSoFar) {
    ASSERT_TRUE(load(constant("2")));
    m_filter.set_channel_bank(1, 1);
    Gain_Calibration_File broken = constant("3");
    broken.line_count = 100;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(load(broken));
    testing::internal::GetCapturedStderr();
    const Block block = ap(10);
    EXPECT_EQ(block[0], 30);
    EXPECT_EQ(block[99], 30);
    EXPECT_EQ(block[100], 20);
    EXPECT_EQ(block[1], 20) << "the electrode selection is kept";
}

TEST_F(GainFilter, WithoutAListenerTheBlockIsDroppedWithAMessage) {
    m_keeper.reset();
    EXPECT_EQ(m_filter.get_listener(), nullptr);
    std::uint16_t values[384] = {};
    testing::internal::CaptureStdout();
    m_filter.publish_ap_ch_data(values);
    m_filter.publish_lp_ch_data(values);
    m_filter.publish_ap_ch_data(values);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "C_L2_CH_Gain_Fix_Filter has no ap listener\n"
                                                      "C_L2_CH_Gain_Fix_Filter has no lp listener\n"
                                                      "C_L2_CH_Gain_Fix_Filter has no ap listener\n");
}

TEST_F(GainFilter, AnswersItsLiveListener) {
    EXPECT_EQ(m_filter.get_listener(), m_keeper);
}

TEST_F(GainFilter, ChannelsAndCodesOutOfBoundsAreRefused) {
    expect_invalid_subscript([&] { m_filter.set_channel_gain_codes(384, 0, 0); });
    expect_invalid_subscript([&] { m_filter.set_channel_bank(960, 0); });
    EXPECT_NO_THROW(m_filter.set_channel_bank(959, 0));
    ASSERT_TRUE(load(constant("1")));
    m_filter.set_channel_gain_codes(5, 8, 0);
    expect_invalid_subscript([&] { ap(1); });
    EXPECT_NO_THROW(lfp(1));
}

TEST_F(GainFilter, ElectrodeBeyondTheCalibrationIsRefusedWhenItIsUsed) {
    ASSERT_TRUE(load(constant("1")));
    m_filter.set_channel_bank(192, 2);
    expect_invalid_subscript([&] { ap(1); });
    expect_invalid_subscript([&] { lfp(1); });
    m_filter.set_channel_bank(192, 1);
    EXPECT_EQ(ap(1), all(1));
}

TEST_F(GainFilter, SettersAndLoadMayRunWhileBlocksAreCorrected) {
    Gain_Calibration_File file = constant("2");
    file.write();
    std::atomic<bool> done{false};
    std::thread setter([&] {
        for (std::uint16_t round = 0; round < 40; ++round) {
            m_filter.set_channel_gain_codes(round, round % 8, 0);
            m_filter.set_channel_bank(round, round % 2);
            if (round % 20 == 0) {
                m_filter.load_gain_calibration(file.path.c_str());
            }
        }
        done = true;
    });
    std::thread loader([&] {
        for (int round = 0; round < 3; ++round) {
            EXPECT_TRUE(m_filter.load_gain_calibration(file.path.c_str()));
        }
    });
    std::size_t wrong = 0;
    do {
        const Block block = ap(10);
        const Block lfp_block = lfp(10);
        for (std::size_t channel = 0; channel < 384; ++channel) {
            wrong += block[channel] != 10 && block[channel] != 20 ? 1U : 0U;
            wrong += lfp_block[channel] != 10 && lfp_block[channel] != 20 ? 1U : 0U;
        }
    } while (!done);
    setter.join();
    loader.join();
    EXPECT_EQ(wrong, 0U);
    EXPECT_EQ(ap(10), all(20));
}

TEST(GainProduct, EqualsThePlainProductForEveryValue) {
    std::mt19937 random(1);
    std::uniform_real_distribution<float> factors(-3.0F, 3.0F);
    for (int round = 0; round < 50; ++round) {
        const float factor = factors(random);
        for (unsigned value = 0; value < 65536; ++value) {
            const auto product = static_cast<long long>(std::trunc(static_cast<float>(value) * factor));
            ASSERT_EQ(gain_product(static_cast<std::uint16_t>(value), factor),
                      static_cast<std::uint16_t>(product & 0xFFFF))
                << value << " * " << factor;
        }
    }
}

TEST(GainProduct, WholeBlocksEqualSingleProducts) {
    std::mt19937 random(2);
    std::uniform_real_distribution<float> factors(0.0F, 100.0F);
    std::uint16_t values[384];
    std::array<float, 384> factor{};
    std::array<std::uint16_t, 384> expected{};
    for (std::size_t i = 0; i < 384; ++i) {
        values[i] = static_cast<std::uint16_t>(random());
        factor[i] = factors(random);
        expected[i] = gain_product(values[i], factor[i]);
    }
    apply_gain(values, factor.data());
    EXPECT_EQ(std::to_array(values), expected);
}

TEST(GainProduct, WholeBlocksEqualThePlainOnesWhateverTheFactors) {
    std::mt19937 random(3);
    std::array<float, 384> factor{};
    for (std::size_t round = 0; round < 2'000; ++round) {
        std::uint16_t values[384];
        std::uint16_t expected[384];
        for (std::size_t i = 0; i < 384; ++i) {
            expected[i] = values[i] = static_cast<std::uint16_t>(random());
            // Any bits: numbers of every size, infinities, and what is no number.
            factor[i] = std::bit_cast<float>(static_cast<std::uint32_t>(random()));
        }
        // At the edge of what fits into 32 bits.
        factor[round % 384] = 32768.0F + (static_cast<float>(round % 5) - 2.0F) / 256.0F;
        values[round % 384] = expected[round % 384] = static_cast<std::uint16_t>(65535 - round % 3);
        apply_gain(values, factor.data());
        Pelgar::ORBE::plain::apply_gain(expected, factor.data());
        ASSERT_EQ(std::to_array(values), std::to_array(expected));
    }
}

TEST(GainProduct, ProductsBeyondThirtyTwoBitsAreZero) {
    EXPECT_EQ(gain_product(65535, 1e30F), 0);
    EXPECT_EQ(gain_product(65535, -1e30F), 0);
    EXPECT_EQ(gain_product(65535, std::numeric_limits<float>::quiet_NaN()), 0);
    EXPECT_EQ(gain_product(65535, std::numeric_limits<float>::infinity()), 0);
    EXPECT_EQ(gain_product(65535, 1.5F), 98302 & 0xFFFF);
}

} // namespace
