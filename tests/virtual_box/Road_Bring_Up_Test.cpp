// Bringing probes up on the virtual box: what goes over the wire, what arrives in the probe, and what happens
// when any one transaction goes wrong.
#include "Box_Fixture.h"
#include "Expected_Chains.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

namespace {

using namespace Pelgar::ORBE;
using namespace Pelgar::ORBE::test;
using Neuropixels::FAILED;
using Neuropixels::NP_ErrorCode;
using Neuropixels::openBS;
using Neuropixels::openPort;
using Neuropixels::SUCCESS;
using Frames = std::vector<Link_Frame>;

constexpr std::uint8_t even_chain = Probe_ASIC::base_chain_of_even_channels;
constexpr std::uint8_t odd_chain = Probe_ASIC::base_chain_of_odd_channels;
constexpr std::uint8_t shank_chain = Probe_ASIC::shank_chain;

Link_Frame asic_write(std::uint8_t reg, std::uint8_t value) {
    return {0x79, 0xE0, reg, 1, value};
}

Link_Frame asic_read(std::uint8_t reg) {
    return {0x79, 0xE1, reg, 1};
}

Link_Frame serializer_write(std::uint8_t reg, std::uint8_t value) {
    return {0x79, 0x80, reg, 1, value};
}

const Frames opening_frames{{0x79, 0x91, 0x1E, 1}, {0x79, 0x81, 0x1E, 1}, {0x79, 0x80, 0x04, 1, 0x83}};

const Frames serializer_configuration{serializer_write(0x0E, 0x42), serializer_write(0x0F, 0xFC)};

// The full initialisation of a probe that has just got its power.
const Frames initialisation{
    asic_write(0x02, 0),          asic_write(0x03, 0),          asic_write(0x04, 0),
    asic_write(0x05, 0),          asic_write(0x06, 0),          asic_write(0x07, 0),
    asic_write(0x09, 0),          asic_write(0x00, 0x40),       asic_read(0x01),
    asic_write(0x01, 0x10),       asic_write(0x01, 0x10),       asic_write(0x01, 0xD0),
    serializer_write(0x0E, 0x42), serializer_write(0x0F, 0xFC),
};

// The write that may go unacknowledged, counted from 1.
constexpr std::size_t tolerated_write = 10;

Frames joined(Frames first, const Frames& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Frames initialisation_and_configuration() {
    return joined(initialisation, serializer_configuration);
}

std::uint8_t mirrored(std::uint8_t byte) {
    unsigned result = 0;
    for (unsigned bit = 0; bit < 8; ++bit) {
        result |= ((unsigned{byte} >> bit) & 1U) << (7 - bit);
    }
    return static_cast<std::uint8_t>(result);
}

Frames upload_frames(std::uint8_t chain, const Chain_Bytes& bytes) {
    Frames frames{asic_write(0x10, static_cast<std::uint8_t>(bytes.size() % 256)),
                  asic_write(0x0F, static_cast<std::uint8_t>(bytes.size() / 256))};
    for (const std::uint8_t byte : bytes) {
        frames.push_back(asic_write(chain, mirrored(byte)));
    }
    return frames;
}

// All uploads of a configuration.
Frames configuration_frames(const Chain_Set& chains, bool readcheck) {
    Frames frames = upload_frames(shank_chain, chains.shank);
    for (const auto& [chain, bytes] :
         {std::pair{even_chain, chains.base_even}, {odd_chain, chains.base_odd}}) {
        frames = joined(std::move(frames), upload_frames(chain, bytes));
        if (readcheck) {
            frames = joined(std::move(frames), upload_frames(chain, bytes));
            frames.push_back(asic_read(0x08));
        }
    }
    return frames;
}

// What the full initialisation leaves in the chains: bank 0, external reference, AP gain code 4, and the
// default calibration of the ADCs.
Expected_Chains initial_chains() {
    Expected_Chains expected;
    for (unsigned channel = 0; channel < 384; ++channel) {
        expected.connect(channel, channel != 191);
        expected.reference(channel, 0);
        expected.gain(channel, 4, 0);
    }
    for (unsigned adc = 0; adc < 32; ++adc) {
        expected.set_number("CompP " + std::to_string(adc), 16, 5);
        expected.set_number("CompN " + std::to_string(adc), 16, 5);
    }
    expected.set("external 1", true);
    expected.set("external 2", true);
    return expected;
}

class Bring_Up : public Box_Fixture {
protected:
    static NP_ErrorCode init(int port) { return Neuropixels::init(slot, port, 0); }

    static NP_ErrorCode write_configuration(int port, bool readcheck = true) {
        return Neuropixels::writeProbeConfiguration(slot, port, 0, readcheck);
    }

    static void select_init_mode(const std::string& text) {
        std::ofstream("ORBE_NP_INIT_MODE") << text << '\n';
    }

    // API port 1..4.
    Virtual_Headstage& headstage(int port) { return m_box->headstage(static_cast<std::size_t>(port - 1)); }

    Chain_Set chains_in_probe(int port) {
        return {headstage(port).chain(shank_chain), headstage(port).chain(even_chain),
                headstage(port).chain(odd_chain)};
    }

    // The frames of one call.
    Frames frames_of(int port, const std::function<void()>& call) {
        headstage(port).forget_frames();
        call();
        return headstage(port).frames();
    }

    void bring_up(int port) {
        ASSERT_EQ(openPort(slot, port), SUCCESS);
        ASSERT_EQ(Neuropixels::openProbe(slot, port, 0), SUCCESS);
        ASSERT_EQ(init(port), SUCCESS);
        ASSERT_EQ(write_configuration(port), SUCCESS);
    }

    void clear_faults(int port) {
        headstage(port).clear_faults();
        headstage(port).forget_frames();
        m_log.clear();
    }

    std::size_t error_lines() const {
        const auto lines = m_log.lines();
        return static_cast<std::size_t>(std::count_if(
            lines.begin(), lines.end(), [](const Log_Line& line) { return line.verbosity == -2; }));
    }
};

// What a transaction reports when it fails: by its frame, and by how it fails.
std::string text_of(const Link_Frame& frame, Link_Fault fault) {
    if (fault == Link_Fault::silence) {
        return "UART_Module recv timeout";
    }
    return (frame[1] & 1U) != 0 ? "qbsc_readI2C error" : "qbsc_writeI2C ACK error";
}

TEST_F(Bring_Up, OpeningAPortChecksItsLink) {
    open();
    EXPECT_EQ(frames_of(3, [] { EXPECT_EQ(openPort(slot, 3), SUCCESS); }), opening_frames);
    EXPECT_EQ(headstage(3).value(Virtual_Headstage::serializer, 0x04), 0x83);
    EXPECT_EQ(m_box->writes_to(Virtual_Box::configuration), (std::vector<std::uint32_t>{0x5E0}));
    EXPECT_EQ(m_log.count(1, "Deserializer device id : 10"), 1);
    EXPECT_EQ(m_log.count(1, "Serializer device id : 9"), 1);
    for (const int other : {1, 2, 4}) {
        EXPECT_EQ(headstage(other).frames(), Frames{});
    }
}

TEST_F(Bring_Up, WrongDeserializerEndsThere) {
    open();
    headstage(1).set(Virtual_Headstage::deserializer, 0x1E, 11);
    EXPECT_EQ(frames_of(1, [] { EXPECT_EQ(openPort(slot, 1), FAILED); }), (Frames{opening_frames[0]}));
    EXPECT_EQ(m_log.count(-2, "Deserializer device id does not match. Read : 11"), 1);
    EXPECT_EQ(error_level(), Error_Level::healthy);
    headstage(1).set(Virtual_Headstage::deserializer, 0x1E, 10);
    EXPECT_EQ(openPort(slot, 1), SUCCESS);
}

TEST_F(Bring_Up, WrongSerializerIsNotSwitchedOn) {
    open();
    headstage(1).set(Virtual_Headstage::serializer, 0x1E, 8);
    EXPECT_EQ(frames_of(1, [] { EXPECT_EQ(openPort(slot, 1), FAILED); }),
              (Frames{opening_frames[0], opening_frames[1]}));
    EXPECT_EQ(m_log.count(-2, "Serializer device id does not match. Read : 8"), 1);
    EXPECT_EQ(error_level(), Error_Level::healthy);
    headstage(1).set(Virtual_Headstage::serializer, 0x1E, 9);
    EXPECT_EQ(openPort(slot, 1), SUCCESS);
}

TEST_F(Bring_Up, PortWithoutALinkFails) {
    m_box->lock_at_look(1, std::nullopt);
    open();
    EXPECT_EQ(openPort(slot, 2), FAILED);
    EXPECT_EQ(m_log.count(-2, "Exception caught while probe probe_init_part_1 : UART_Module recv timeout"),
              1);
    EXPECT_EQ(error_level(), Error_Level::probe_link);
    EXPECT_EQ(m_waiter.count(std::chrono::milliseconds(1)), 10U) << "the receive budget";
    EXPECT_EQ(openPort(slot, 1), SUCCESS) << "the other ports have one";
}

TEST_F(Bring_Up, FullInitialisationIsExactOnTheWire) {
    open();
    ASSERT_EQ(openPort(slot, 2), SUCCESS);
    m_box->forget_accesses();
    EXPECT_EQ(frames_of(2, [] { EXPECT_EQ(init(2), SUCCESS); }), initialisation_and_configuration());
    EXPECT_EQ(m_log.count(0, "Using init config : 1"), 1);
    EXPECT_EQ(m_log.count(0, "Using default ADC config"), 1);
    EXPECT_EQ(headstage(2).value(Virtual_Headstage::probe_asic, 0x00), 0x40);
    EXPECT_EQ(headstage(2).value(Virtual_Headstage::probe_asic, 0x01), 0xD0);
    EXPECT_EQ(headstage(2).value(Virtual_Headstage::serializer, 0x0E), 0x42);
    EXPECT_EQ(headstage(2).value(Virtual_Headstage::serializer, 0x0F), 0xFC);
    EXPECT_EQ(m_box->writes_to(Virtual_Box::configuration), (std::vector<std::uint32_t>{0x5D0}));
}

TEST_F(Bring_Up, ProbeWithPowerIsInitialisedWithoutSwitchingItOn) {
    open();
    headstage(1).set(Virtual_Headstage::probe_asic, 0x01, 0x11);
    Frames expected = initialisation_and_configuration();
    expected.erase(expected.begin() + 9, expected.begin() + 11);
    expected[9] = asic_write(0x01, 0xD1);
    EXPECT_EQ(frames_of(1, [] { EXPECT_EQ(init(1), SUCCESS); }), expected);
}

TEST_F(Bring_Up, OtherInitialisationModesAddTheirSetUp) {
    open();
    const auto frames_of_mode = [&](const char* mode) {
        headstage(1).set(Virtual_Headstage::probe_asic, 0x01, 0);
        headstage(1).set(Virtual_Headstage::probe_asic, 0x02, 0);
        select_init_mode(mode);
        return frames_of(1, [] { EXPECT_EQ(init(1), SUCCESS); });
    };
    EXPECT_EQ(frames_of_mode("0"), joined({asic_read(0x01), asic_write(0x01, 0x30), asic_write(0x01, 0xD0)},
                                          serializer_configuration));
    EXPECT_EQ(frames_of_mode("2"),
              joined(joined(initialisation, {asic_write(0x01, 0xD0), asic_write(0x02, 0), asic_write(0x03, 0),
                                             asic_write(0x04, 0), asic_write(0x05, 0), asic_write(0x06, 0),
                                             asic_write(0x07, 0), asic_write(0x00, 0x50)}),
                     serializer_configuration));
    EXPECT_EQ(frames_of_mode("3"),
              joined(joined(initialisation, {asic_read(0x02), asic_write(0x02, 0x10), asic_read(0x02),
                                             asic_write(0x02, 0x50), asic_write(0x00, 0x60)}),
                     serializer_configuration));
    EXPECT_EQ(frames_of_mode("4"),
              joined(joined(initialisation, {asic_read(0x02), asic_write(0x02, 0x10), asic_read(0x02),
                                             asic_write(0x02, 0x90), asic_write(0x00, 0x60)}),
                     serializer_configuration));
    EXPECT_EQ(frames_of_mode("77"), initialisation_and_configuration());
}

TEST_F(Bring_Up, FourPortsAreBroughtUpEachWithItsOwnConfiguration) {
    open();
    for (int port = 1; port <= 4; ++port) {
        ASSERT_EQ(openPort(slot, port), SUCCESS);
        ASSERT_EQ(Neuropixels::openProbe(slot, port, 0), SUCCESS);
        ASSERT_EQ(init(port), SUCCESS);
        ASSERT_EQ(Neuropixels::setGain(slot, port, 0, 10 * port, port, port + 1), SUCCESS);
    }
    for (int port = 1; port <= 4; ++port) {
        ASSERT_EQ(write_configuration(port), SUCCESS);
        const auto number = static_cast<unsigned>(port);
        Expected_Chains expected = initial_chains();
        expected.gain(10 * number, number, number + 1);
        EXPECT_EQ(chains_in_probe(port), expected.chains());
    }
}

TEST_F(Bring_Up, UploadIsExactOnTheWireWithAndWithoutReadcheck) {
    open();
    ASSERT_EQ(openPort(slot, 1), SUCCESS);
    ASSERT_EQ(init(1), SUCCESS);
    const Chain_Set expected = initial_chains().chains();
    for (const bool readcheck : {false, true}) {
        const Frames frames = frames_of(1, [&] { EXPECT_EQ(write_configuration(1, readcheck), SUCCESS); });
        EXPECT_TRUE(frames == configuration_frames(expected, readcheck)) << frames.size() << " frames";
        EXPECT_EQ(chains_in_probe(1), expected);
        EXPECT_EQ(m_log.count(0, "SR upload status ok. (80h)."), readcheck ? 2 : 0);
    }
    EXPECT_EQ(headstage(1).uploads(shank_chain).size(), 2U) << "the shank chain is never read back";
    EXPECT_EQ(headstage(1).uploads(even_chain).size(), 3U);
    EXPECT_EQ(headstage(1).uploads(odd_chain).size(), 3U);
    EXPECT_EQ(headstage(1).stray_bytes(), 0U);
    EXPECT_EQ(m_box->unread_uart_bytes(), 0U);
}

TEST_F(Bring_Up, EverySettingReachesTheProbe) {
    open();
    ASSERT_EQ(openPort(slot, 4), SUCCESS);
    ASSERT_EQ(init(4), SUCCESS);
    Expected_Chains expected = initial_chains();

    EXPECT_EQ(Neuropixels::clear_all_electrode_to_bank_assignments(slot, 4), SUCCESS);
    for (unsigned channel = 0; channel < 384; ++channel) {
        expected.connect(channel, false);
    }
    for (unsigned channel = 0; channel < 384; ++channel) {
        const auto number = static_cast<int>(channel);
        const unsigned banks = channel < 192 ? 3 : 2;
        const unsigned bank = channel % banks;
        if (channel != 191) {
            EXPECT_EQ(Neuropixels::selectElectrode(slot, 4, 0, number, 0, static_cast<int>(bank)), SUCCESS);
            expected.connect(bank * 384 + channel, true);
        }
        const unsigned ap = channel % 8;
        const unsigned lfp = (channel / 8) % 8;
        EXPECT_EQ(Neuropixels::setGain(slot, 4, 0, number, static_cast<int>(ap), static_cast<int>(lfp)),
                  SUCCESS);
        expected.gain(channel, ap, lfp);
        const unsigned reference = channel % 3;
        EXPECT_EQ(Neuropixels::setReference(slot, 4, 0, number, 0,
                                            static_cast<Neuropixels::channelreference_t>(reference), 1),
                  SUCCESS);
        expected.reference(channel, reference);
        EXPECT_EQ(Neuropixels::setAPCornerFrequency(slot, 4, 0, number, channel % 5 == 0), SUCCESS);
        expected.ap_filter(channel, channel % 5 == 0);
    }
    expected.set("tip 1", true);
    expected.set("tip 2", true);
    expected.connect(384 + 191, true);

    std::ofstream file("adc.csv");
    file << "ADC,CompP,CompN,Slope,Coarse,Fine,Cfix,Offset,Threshold\n";
    for (unsigned adc = 0; adc < 32; ++adc) {
        const std::string number = std::to_string(adc);
        file << adc << ',' << adc << ',' << 31 - adc << ',' << adc % 8 << ',' << adc % 4 << ','
             << (adc / 4) % 4 << ',' << adc % 16 << ",100,200\n";
        expected.set_number("CompP " + number, adc, 5);
        expected.set_number("CompN " + number, 31 - adc, 5);
        expected.set_number("Slope " + number, adc % 8, 3);
        expected.set_number("Coarse " + number, adc % 4, 2);
        expected.set_number("Fine " + number, (adc / 4) % 4, 2);
        expected.set_number("Cfix " + number, adc % 16, 4);
    }
    file.close();
    EXPECT_EQ(Neuropixels::setADCCalibration(slot, 4, "adc.csv"), SUCCESS);

    const Frames before = headstage(4).frames();
    EXPECT_EQ(before, joined(opening_frames, initialisation_and_configuration()))
        << "settings wait in memory for the upload";
    EXPECT_EQ(write_configuration(4), SUCCESS);
    EXPECT_EQ(chains_in_probe(4), expected.chains());
}

// Over the sweeps every channel takes every bank, every reference, and every pair of gain codes.
TEST_F(Bring_Up, EveryChannelInEveryBankWithEveryReferenceAndGainReachesTheProbe) {
    constexpr unsigned gain_pairs = 64;
    open();
    ASSERT_EQ(openPort(slot, 1), SUCCESS);
    ASSERT_EQ(init(1), SUCCESS);
    for (unsigned sweep = 0; sweep < gain_pairs; ++sweep) {
        Expected_Chains expected = initial_chains();
        ASSERT_EQ(Neuropixels::clear_all_electrode_to_bank_assignments(slot, 1), SUCCESS);
        for (unsigned channel = 0; channel < 384; ++channel) {
            expected.connect(channel, false);
        }
        for (unsigned channel = 0; channel < 384; ++channel) {
            const auto number = static_cast<int>(channel);
            const unsigned bank = (channel + sweep) % (channel < 192 ? 3 : 2);
            if (channel != 191) {
                ASSERT_EQ(Neuropixels::selectElectrode(slot, 1, 0, number, 0, static_cast<int>(bank)),
                          SUCCESS);
                expected.connect(bank * 384 + channel, true);
            }
            const unsigned ap = (channel + sweep) % 8;
            const unsigned lfp = (channel / 8 + sweep / 8) % 8;
            ASSERT_EQ(Neuropixels::setGain(slot, 1, 0, number, static_cast<int>(ap), static_cast<int>(lfp)),
                      SUCCESS);
            expected.gain(channel, ap, lfp);
            const unsigned reference = (channel + sweep) % 3;
            ASSERT_EQ(Neuropixels::setReference(slot, 1, 0, number, 0,
                                                static_cast<Neuropixels::channelreference_t>(reference),
                                                static_cast<int>(sweep % 3)),
                      SUCCESS);
            expected.reference(channel, reference);
        }
        expected.set("tip 1", true);
        expected.set("tip 2", true);
        expected.connect(sweep % 3 * 384 + 191, true);
        ASSERT_EQ(write_configuration(1, false), SUCCESS);
        ASSERT_EQ(chains_in_probe(1), expected.chains()) << "sweep " << sweep;
        m_box->forget_accesses();
        headstage(1).forget_frames();
    }
}

TEST_F(Bring_Up, FaultAtAnyStepOfOpeningFailsAndASecondTrySucceeds) {
    open();
    for (const Link_Fault fault : {Link_Fault::silence, Link_Fault::wrong_acknowledge}) {
        for (std::size_t step = 0; step < opening_frames.size(); ++step) {
            clear_faults(1);
            headstage(1).fail_once(step + 1, fault);
            EXPECT_EQ(openPort(slot, 1), FAILED);
            EXPECT_EQ(headstage(1).frames().size(), step + 1) << "nothing follows the fault";
            EXPECT_EQ(m_log.count(-2, "Exception caught while probe probe_init_part_1 : " +
                                          text_of(opening_frames[step], fault)),
                      1);
            EXPECT_EQ(error_lines(), 1U);
            EXPECT_EQ(error_level(), Error_Level::probe_link);
            EXPECT_EQ(openPort(slot, 1), SUCCESS);
            open();
            EXPECT_EQ(error_level(), Error_Level::healthy);
        }
    }
}

TEST_F(Bring_Up, FaultAtAnyStepOfInitialisationFailsAndASecondTrySucceeds) {
    open();
    const Frames steps = initialisation_and_configuration();
    for (const Link_Fault fault : {Link_Fault::silence, Link_Fault::wrong_acknowledge}) {
        for (std::size_t step = 1; step <= steps.size(); ++step) {
            open();
            ASSERT_EQ(openPort(slot, 1), SUCCESS);
            clear_faults(1);
            headstage(1).fail_once(step, fault);
            if (step == tolerated_write && fault == Link_Fault::wrong_acknowledge) {
                EXPECT_EQ(init(1), SUCCESS) << "this write may go unacknowledged";
                EXPECT_EQ(headstage(1).frames(), steps);
                EXPECT_EQ(error_level(), Error_Level::healthy);
                continue;
            }
            EXPECT_EQ(init(1), FAILED) << "step " << step;
            EXPECT_EQ(headstage(1).frames().size(), step) << "nothing follows the fault";
            EXPECT_EQ(m_log.count(-2, "Exception caught while np_control_init : " +
                                          text_of(steps[step - 1], fault)),
                      1);
            EXPECT_EQ(m_log.count(-2, "probe_init_part_2 failed"), 1);
            EXPECT_EQ(error_lines(), 2U);
            EXPECT_EQ(error_level(), Error_Level::probe_link);
            EXPECT_EQ(init(1), SUCCESS) << "step " << step;
        }
    }
}

TEST_F(Bring_Up, FaultAtAnyPlaceOfTheUploadFailsAndASecondTrySucceeds) {
    open();
    ASSERT_EQ(openPort(slot, 1), SUCCESS);
    ASSERT_EQ(init(1), SUCCESS);
    const Chain_Set expected = initial_chains().chains();
    const Frames steps = configuration_frames(expected, true);
    // The ends of each chain and of each pass, something from their middles, and the two looks at the status.
    for (const std::size_t step : {std::size_t{1}, std::size_t{2}, std::size_t{3}, std::size_t{60},
                                   std::size_t{123}, std::size_t{124}, std::size_t{300}, std::size_t{432},
                                   std::size_t{740}, std::size_t{741}, steps.size() - 1, steps.size()}) {
        for (const Link_Fault fault : {Link_Fault::silence, Link_Fault::wrong_acknowledge}) {
            clear_faults(1);
            headstage(1).fail_once(step, fault);
            EXPECT_EQ(write_configuration(1), FAILED) << "step " << step;
            EXPECT_EQ(headstage(1).frames().size(), step);
            EXPECT_EQ(m_log.count(-2, "Exception caught during probe configuration load : " +
                                          text_of(steps[step - 1], fault)),
                      1)
                << "step " << step;
            EXPECT_EQ(error_lines(), 1U);
            EXPECT_EQ(error_level(), Error_Level::healthy) << "an upload can be repeated";
            EXPECT_EQ(write_configuration(1), SUCCESS) << "step " << step;
            EXPECT_EQ(chains_in_probe(1), expected);
        }
    }
}

TEST_F(Bring_Up, ByteLostOnTheWayIsFoundByTheReadcheck) {
    open();
    ASSERT_EQ(openPort(slot, 1), SUCCESS);
    ASSERT_EQ(init(1), SUCCESS);
    for (const std::size_t step : {std::size_t{200}, std::size_t{500}, std::size_t{900}, std::size_t{1200}}) {
        clear_faults(1);
        headstage(1).fail_once(step, Link_Fault::lost_write);
        EXPECT_EQ(write_configuration(1), FAILED) << "step " << step;
        EXPECT_EQ(m_log.count(0, "SR upload readcheck status: 00h."), 1);
        EXPECT_EQ(
            m_log.count(-2, "Exception caught during probe configuration load : SR upload status not ok"), 1);
        EXPECT_EQ(error_level(), Error_Level::healthy);
        EXPECT_EQ(write_configuration(1), SUCCESS);
    }
    headstage(1).forget_frames();
    headstage(1).fail_once(200, Link_Fault::lost_write);
    EXPECT_EQ(write_configuration(1, false), SUCCESS) << "without the readcheck nobody notices";
    EXPECT_EQ(headstage(1).chain(even_chain).size(), 305U);
}

// As host mode has it.
void drop_left_over_answers() {
    npoe_adapter::current_controller()->set_dropping_left_over_answers(true);
}

TEST_F(Bring_Up, LateAnswerIsTakenForTheNextOne) {
    open();
    headstage(2).forget_frames();
    headstage(2).fail_once(1, Link_Fault::late);
    EXPECT_EQ(openPort(slot, 2), FAILED);
    headstage(2).clear_faults();
    EXPECT_EQ(openPort(slot, 2), FAILED) << "the box's own way keeps what is left";
    EXPECT_GT(m_box->unread_uart_bytes(), 0U);
}

TEST_F(Bring_Up, LateAnswerIsNotTakenForTheNextOneWhereItIsDropped) {
    open();
    drop_left_over_answers();
    ASSERT_EQ(openPort(slot, 2), SUCCESS);
    const std::size_t frames = headstage(2).frames().size();
    for (std::size_t step = 1; step <= frames; ++step) {
        headstage(2).forget_frames();
        headstage(2).fail_once(step, Link_Fault::late);
        EXPECT_EQ(openPort(slot, 2), FAILED) << "step " << step;
        headstage(2).clear_faults();
        EXPECT_EQ(openPort(slot, 2), SUCCESS) << "step " << step;
        EXPECT_EQ(m_box->unread_uart_bytes(), 0U);
    }
}

TEST_F(Bring_Up, LateAnswerIsDroppedBehindAnotherOpening) {
    open();
    drop_left_over_answers();
    headstage(2).forget_frames();
    headstage(2).fail_once(1, Link_Fault::late);
    EXPECT_EQ(openPort(slot, 2), FAILED);
    headstage(2).clear_faults();
    Neuropixels::closeBS(slot);
    open();
    drop_left_over_answers();
    EXPECT_EQ(openPort(slot, 2), SUCCESS);
    EXPECT_EQ(m_box->unread_uart_bytes(), 0U);
}

TEST_F(Bring_Up, LinkThatStaysSilentNeverHangs) {
    open();
    bring_up(1);
    headstage(1).fail_from(1, Link_Fault::silence);
    headstage(1).forget_frames();
    char text[64] = "";
    std::uint64_t number = 0;
    EXPECT_EQ(openPort(slot, 1), FAILED);
    EXPECT_EQ(init(1), FAILED);
    EXPECT_EQ(write_configuration(1), FAILED);
    EXPECT_EQ(Neuropixels::readProbeSN(slot, 1, 0, &number), FAILED);
    EXPECT_EQ(Neuropixels::readProbePN(slot, 1, 0, text, sizeof(text)), FAILED);
    EXPECT_EQ(Neuropixels::readHSPN(slot, 1, text, sizeof(text)), FAILED);
    EXPECT_STREQ(text, "NP2_HS_30") << "the default is given all the same";
    EXPECT_EQ(m_log.count(-2, "Exception caught during readProbeSN : UART_Module recv timeout"), 1);
    EXPECT_EQ(m_log.count(-2, "Exception caught during readProbePN : UART_Module recv timeout"), 1);
    EXPECT_EQ(m_log.count(-2, "Exception caught during readHSPN : UART_Module recv timeout"), 1);
    EXPECT_EQ(headstage(1).frames().size(), 6U) << "each gives up at its first transaction";
    headstage(1).clear_faults();
    bring_up(1);
    EXPECT_EQ(chains_in_probe(1), initial_chains().chains());
}

TEST_F(Bring_Up, ProbesAreBroughtUpAnewAfterTheBasestationWasClosed) {
    open();
    bring_up(1);
    EXPECT_EQ(Neuropixels::closeBS(slot), SUCCESS);
    EXPECT_EQ(headstage(1).chain(shank_chain), Chain_Bytes{}) << "closing takes the probes' power";
    open();
    bring_up(1);
    EXPECT_EQ(chains_in_probe(1), initial_chains().chains());
}

TEST_F(Bring_Up, IdentityComesFromTheEEPROMs) {
    open();
    ASSERT_EQ(openPort(slot, 2), SUCCESS);
    std::uint64_t number = 0;
    char text[100] = "";
    EXPECT_EQ(Neuropixels::readProbeSN(slot, 2, 0, &number), SUCCESS);
    EXPECT_EQ(number, 0x1122334455667788U);
    EXPECT_EQ(Neuropixels::readProbePN(slot, 2, 0, text, sizeof(text)), SUCCESS);
    EXPECT_STREQ(text, "PRB_1_4_0480_1");
    EXPECT_EQ(m_log.count(0, "Reporting probe part number : PRB_1_4_0480_1"), 1);
    EXPECT_EQ(Neuropixels::readHSPN(slot, 2, text, sizeof(text)), SUCCESS);
    EXPECT_STREQ(text, "NP2_HS_30");
    EXPECT_EQ(m_log.count(0, "Reading version 5.2 HS part number"), 1);
    EXPECT_EQ(m_log.count(1, "9 characters read from EEPROM"), 1);
}

TEST_F(Bring_Up, ProbePartNumberWithoutAnEndIsCutAtFortyCharacters) {
    open();
    ASSERT_EQ(openPort(slot, 1), SUCCESS);
    for (unsigned reg = 40; reg < 256; ++reg) {
        headstage(1).set(Virtual_Headstage::probe_eeprom, static_cast<std::uint8_t>(reg), 'x');
    }
    char text[100] = "";
    EXPECT_EQ(
        frames_of(1, [&] { EXPECT_EQ(Neuropixels::readProbePN(slot, 1, 0, text, sizeof(text)), SUCCESS); })
            .size(),
        40U);
    EXPECT_EQ(std::string(text), std::string(40, 'x'));
}

TEST_F(Bring_Up, HeadstagePartNumberLiesWhereItsVersionSays) {
    open();
    ASSERT_EQ(openPort(slot, 1), SUCCESS);
    headstage(1).set(Virtual_Headstage::headstage_eeprom, 1, 0x03);
    headstage(1).set_text(Virtual_Headstage::headstage_eeprom, 10, "NPM_HS_01");
    char text[64] = "";
    const Frames frames =
        frames_of(1, [&] { EXPECT_EQ(Neuropixels::readHSPN(slot, 1, text, sizeof(text)), SUCCESS); });
    EXPECT_STREQ(text, "NPM_HS_01");
    EXPECT_EQ(m_log.count(0, "Reading version 5.3 HS part number"), 1);
    ASSERT_EQ(frames.size(), 12U);
    EXPECT_EQ(frames[2], (Link_Frame{0x79, 0xA5, 10, 1}));

    headstage(1).set(Virtual_Headstage::headstage_eeprom, 0, 0x06);
    EXPECT_EQ(Neuropixels::readHSPN(slot, 1, text, sizeof(text)), SUCCESS);
    EXPECT_EQ(m_log.count(-1, "Unindentifed HS EEPROM version : 306"), 1);
    EXPECT_STREQ(text, "NP2_HS_30");
}

TEST_F(Bring_Up, DamagedHeadstageEEPROMYieldsTheDefaultPartNumber) {
    open();
    ASSERT_EQ(openPort(slot, 1), SUCCESS);
    headstage(1).set(Virtual_Headstage::headstage_eeprom, 20, 0xFF);
    char text[64] = "";
    EXPECT_EQ(Neuropixels::readHSPN(slot, 1, text, sizeof(text)), SUCCESS);
    EXPECT_STREQ(text, "NP2_HS_30");
    EXPECT_EQ(m_log.count(0, "Invalid HS eeprom detected, defaulting to NP2_HS_30"), 1);
}

} // namespace
