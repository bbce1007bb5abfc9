#include "Format_Name.h"
#include "Made_Recording.h"
#include "Program_Run.h"
#include "Read_Samples.h"
#include "formats/Make_Writer.h"
#include "repair/Repair.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <random>
#include <string>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::recorder;
using Json = nlohmann::json;

class Reader : public testing::TestWithParam<std::string> {
protected:
    Format format() const { return format_of(GetParam()).value(); }

    bool is_spikeglx() const { return format() == Format::spikeglx; }
};

test::Program_Run run_script(const std::string& name, const std::string& arguments) {
    return test::run_program(std::string(ORBE_SYSTEM_PYTHON " -B '" ORBE_READER_SCRIPTS "/") + name + "' " +
                             arguments);
}

void expect_success(const test::Program_Run& run, const std::string& output) {
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_EQ(run.output, output) << run.errors;
}

// What a reader should give of the made recording.
class Expectation {
public:
    Expectation(Format format, const Recording_Description& description, bool is_whole)
        : m_is_spikeglx(format == Format::spikeglx), m_description(description) {
        for (std::size_t probe = 0; probe < description.probes.size(); ++probe) {
            add_probe(probe, true);
            add_probe(probe, false);
        }
        add_adc();
        const Json json{{"is_whole", is_whole}, {"streams", m_streams}};
        write_file("expected.json", json.dump());
    }

    std::size_t value_count() const { return m_value_count; }

private:
    static bool is_lost(bool is_second, std::uint64_t sample) {
        return is_second && (sample < test::second_probe_begins || test::lost_of_second_probe.has(sample));
    }

    // The last packet of a stream ends with its twelfth sample that has come.
    static std::uint64_t end_of(bool is_second) {
        if (!is_second) {
            return test::made_samples;
        }
        const std::uint64_t lost = test::lost_of_second_probe.end - test::lost_of_second_probe.begin;
        const std::uint64_t come = test::made_samples - test::second_probe_begins - lost;
        return test::made_samples - come % 12;
    }

    // The sync level is kept over a gap.
    static bool held_level(bool is_second, std::uint64_t sample) {
        if (is_second && sample < test::second_probe_begins) {
            return false;
        }
        return test::sync_level(is_lost(is_second, sample) ? test::lost_of_second_probe.begin - 1 : sample);
    }

    void add_probe(std::size_t probe, bool is_ap) {
        const Probe_Description& settings = m_description.probes[probe];
        const bool is_second = probe == 1;
        const std::string letter(1, static_cast<char>('A' + probe));
        const std::string imec = "imec" + std::to_string(probe);
        std::vector<std::string> channels;
        std::vector<double> gains;
        for (std::size_t channel = 0; channel < channel_count; ++channel) {
            const int gain = is_ap ? settings.channels[channel].ap_gain : settings.channels[channel].lfp_gain;
            gains.push_back(1.2e6 / 1024 / gain);
            channels.push_back(m_is_spikeglx ? (is_ap ? "AP" : "LF") + std::to_string(channel)
                                             : (is_ap ? "AP" : "LFP") + std::to_string(channel + 1));
        }
        begin_stream(m_is_spikeglx ? imec + (is_ap ? ".ap" : ".lf")
                                   : "ORBE-100.Probe" + letter + (is_ap ? "-AP" : "-LFP"),
                     channels, gains, "uV", is_ap ? 30'000 : 2'500);
        if (is_ap) {
            for (std::uint64_t sample = 0; sample < end_of(is_second); ++sample) {
                for (int channel = 0; channel < 384; ++channel) {
                    m_samples.push_back(is_lost(is_second, sample)
                                            ? std::int16_t{0}
                                            : test::ap_value(settings.port, channel, sample));
                }
                m_sync.push_back(held_level(is_second, sample) ? 1 : 0);
            }
        } else {
            add_lfp(settings.port, is_second);
        }
        end_stream();
    }

    // One sample a packet; behind a gap the packets begin with another sample.
    void add_lfp(int port, bool is_second) {
        const auto packets =
            test::made_packets(port, is_second ? test::second_probe_begins : 0, test::made_samples,
                               [&](std::uint64_t sample) { return is_lost(is_second, sample); });
        bool level = false;
        for (const auto& packet : packets) {
            const std::uint64_t sample = (std::uint64_t{packet.timestamp[0]} * 3 + 9) / 10;
            const std::uint64_t begin = is_second ? test::second_probe_begins : 0;
            const std::uint64_t place = (sample - begin + 6) / 12;
            for (; m_sync.size() < place; m_sync.push_back(level ? 1 : 0)) {
                m_samples.insert(m_samples.end(), channel_count, std::int16_t{0});
            }
            level = test::sync_level(sample);
            for (int channel = 0; channel < 384; ++channel) {
                m_samples.push_back(test::lfp_value(port, channel, sample / 12));
            }
            m_sync.push_back(level ? 1 : 0);
        }
    }

    void add_adc() {
        constexpr int inputs = 12;
        std::vector<std::string> channels;
        for (int input = 0; input < inputs; ++input) {
            channels.push_back((m_is_spikeglx ? "XA" : "ADC") + std::to_string(input));
        }
        std::vector<double> gains(inputs, m_description.adc.value().range_volts / 32768);
        if (m_is_spikeglx) {
            channels.push_back("XD0");
            gains.push_back(gains[0]); // of a word of bits, without a meaning
        }
        begin_stream(m_is_spikeglx ? "obx0" : "ORBE-100.ADC", channels, gains, "V", 30'000);
        for (std::uint64_t sample = 0; sample < test::made_samples; ++sample) {
            const bool is_lost = test::lost_of_adc.has(sample);
            int word = 0;
            for (int input = 0; input < inputs; ++input) {
                m_samples.push_back(is_lost ? std::int16_t{0} : test::adc_value(input, sample));
                word |= (!is_lost && test::comparator_level(input, sample) ? 1 : 0) << input;
            }
            if (m_is_spikeglx) {
                m_samples.push_back(static_cast<std::int16_t>(word));
            }
            m_sync.push_back(test::sync_level(is_lost ? sample - 1 : sample) ? 1 : 0);
        }
        end_stream();
    }

    void begin_stream(const std::string& name, const std::vector<std::string>& channels,
                      const std::vector<double>& gains, const std::string& units, double rate) {
        m_streams.push_back({{"name", name},
                             {"file", name + ".expected"},
                             {"sync_file", name + ".sync"},
                             {"channels", channels},
                             {"gains", gains},
                             {"units", units},
                             {"rate", rate},
                             {"start", 0.0}});
        m_samples.clear();
        m_sync.clear();
    }

    void end_stream() {
        const std::string name = m_streams.back()["name"];
        std::ofstream(name + ".expected", std::ios::binary)
            .write(reinterpret_cast<const char*>(m_samples.data()),
                   static_cast<std::streamsize>(m_samples.size() * sizeof(std::int16_t)));
        std::ofstream(name + ".sync", std::ios::binary)
            .write(m_sync.data(), static_cast<std::streamsize>(m_sync.size()));
        m_value_count += m_samples.size();
    }

    const bool m_is_spikeglx;
    const Recording_Description& m_description;
    Json m_streams = Json::array();
    std::vector<std::int16_t> m_samples;
    std::vector<char> m_sync;
    std::size_t m_value_count = 0;
};

TEST_P(Reader, GivesEverySampleAndAllThatIsKnownOfIt) {
    const auto description = test::made_description();
    test::make_recording(format(), "run", description);
    const Expectation expectation(format(), description, true);
    expect_success(run_script("compare.py", "run " + GetParam() + " expected.json"),
                   "compared " + std::to_string(expectation.value_count()) + "\n");
}

// A folder that is given up without an end opens as it is.
TEST_P(Reader, OpensARecordingThatWasKilled) {
    const auto description = test::made_description();
    auto writer = make_writer(format(), "run", description);
    test::write_made_packets(*writer, description);
    const Expectation expectation(format(), description, false);
    const auto run = run_script("compare.py", "run " + GetParam() + " expected.json");
    EXPECT_EQ(run.exit_code, 0) << run.errors;
    EXPECT_TRUE(run.output.starts_with("compared ")) << run.output;
}

TEST_P(Reader, OpensWhatWasRepaired) {
    const auto description = test::made_description();
    test::make_recording(format(), "whole", description);
    const Expectation expectation(format(), description, false);
    std::mt19937 random(is_spikeglx() ? 11 : 12);
    for (int round = 0; round < 2; ++round) {
        std::filesystem::remove_all("run");
        std::filesystem::copy("whole", "run", std::filesystem::copy_options::recursive);
        for (const auto& entry : std::filesystem::recursive_directory_iterator("run")) {
            const auto extension = entry.path().extension();
            if ((extension == ".bin" || extension == ".dat" || extension == ".npy") &&
                entry.path().string().find("MessageCenter") == std::string::npos) {
                std::filesystem::resize_file(entry.path(), random() % entry.file_size());
            }
        }
        repair_recording("run");
        const auto run = run_script("compare.py", "run " + GetParam() + " expected.json");
        EXPECT_EQ(run.exit_code, 0) << run.errors;
        EXPECT_GT(run.output.size(), std::string("compared 0\n").size()) << run.output;
    }
}

TEST_P(Reader, SeesTonesOfAMadeRecordingInMicrovolts) {
    const std::string program = ORBE_RECORDING_PROGRAM;
    auto run =
        test::run_program(program + " make raw.bin --seconds 0.5 --ports 1,4 --signal tone --tone-hz 900");
    ASSERT_EQ(run.exit_code, 0) << run.errors;
    run = test::run_program(program + " export raw.bin run --format " + GetParam() +
                            " --ap-gain 1000 --lfp-gain 125");
    ASSERT_EQ(run.exit_code, 0) << run.errors;
    // The generator's sine is 300 steps high, and a step is 1.2 V / 1024 at the converter.
    expect_success(run_script("tone.py", "run " + GetParam() + " 900 351.5625 2812.5"), "looked at 4\n");
}

INSTANTIATE_TEST_SUITE_P(Formats, Reader, testing::Values("spikeglx", "open-ephys"), test::format_test_name);

TEST(Reader_Of_Events, GivesTheEdgesOfTheSyncInput) {
    auto description = test::made_description();
    description.adc.reset();
    description.probes.resize(1); // its readers know of one stream's edges only
    auto writer = make_writer(Format::open_ephys, "run", description);
    test::write_made_packets(*writer, description);
    writer->finish();
    Json json{{"channel", "ProbeA-AP TTL"}, {"rising", Json::array()}, {"durations", Json::array()}};
    for (int edge = 0; edge < 12; ++edge) {
        json["rising"].push_back(edge / 30.0);
        json["durations"].push_back(700 / 30'000.0);
    }
    write_file("expected.json", json.dump());
    expect_success(run_script("events.py", "run expected.json"), "found 12\n");
}

} // namespace
