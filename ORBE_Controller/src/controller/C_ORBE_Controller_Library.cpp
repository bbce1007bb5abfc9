#include "controller/C_ORBE_Controller_Library.h"

#include <loguru.hpp>

#include <exception>
#include <utility>

namespace Pelgar::ORBE {

ORBE_Controller_Library::ORBE_Controller_Library(bool simulation) : m_box(simulation) {
    m_box.attach(A_ORBE_Controller::get_instance(simulation));
    log_mode();
}

ORBE_Controller_Library::ORBE_Controller_Library(std::shared_ptr<A_ORBE_Controller> controller,
                                                 bool simulation)
    : m_box(simulation) {
    m_box.attach(std::move(controller));
    log_mode();
}

ORBE_Controller_Library::~ORBE_Controller_Library() {
    LOG_F(INFO, "ORBE_Controller_Library dtor");
    try {
        finalize_stream();
    } catch (const std::exception& exception) {
        LOG_F(ERROR, "finalize_stream failed : %s", exception.what());
    }
}

void ORBE_Controller_Library::log_mode() const {
    LOG_F(INFO, "ORBE_Controller_Library ctor. (%s)", m_box.is_simulation() ? "Simulation mode" : "HW mode");
}

bool ORBE_Controller_Library::open() {
    return m_bring_up.open();
}

bool ORBE_Controller_Library::check_and_switch_firmware_if_nec(bool switch_allowed) {
    return m_bring_up.check_and_switch_firmware_if_nec(switch_allowed);
}

bool ORBE_Controller_Library::icap_boot(unsigned address) {
    return m_bring_up.icap_boot(address);
}

bool ORBE_Controller_Library::pre_init(bool one_mode) {
    return m_bring_up.pre_init(one_mode);
}

std::string ORBE_Controller_Library::get_design_identifier_from_fpga() {
    return m_bring_up.get_design_identifier_from_fpga();
}

std::string ORBE_Controller_Library::get_design_build_date() {
    return m_bring_up.get_design_build_date();
}

std::string ORBE_Controller_Library::get_library_version() const {
    return "1.0";
}

float ORBE_Controller_Library::get_fpga_temperature() const {
    return m_bring_up.get_fpga_temperature();
}

unsigned ORBE_Controller_Library::get_fpga_efuse() const {
    return m_bring_up.get_fpga_efuse();
}

unsigned char ORBE_Controller_Library::get_np_port_count_from_fpga_signature() const {
    return m_bring_up.locks().port_count();
}

unsigned char ORBE_Controller_Library::get_cached_np_port_status() const {
    return m_bring_up.locks().cached_status();
}

unsigned char ORBE_Controller_Library::get_np_port_status_now() const {
    return m_bring_up.locks().status_now();
}

bool ORBE_Controller_Library::is_in_simulation_mode() const {
    return m_box.is_simulation();
}

Error_Level ORBE_Controller_Library::get_current_error_level() const {
    return m_box.error_level();
}

bool ORBE_Controller_Library::probe_init_part_1(unsigned port) {
    return m_probe_bring_up.probe_init_part_1(port);
}

bool ORBE_Controller_Library::probe_init_part_2(unsigned port, E_ORBE_Init_Config init_config) {
    return m_probe_bring_up.probe_init_part_2(port, init_config);
}

bool ORBE_Controller_Library::writeProbeConfiguration(unsigned port, bool readcheck) {
    return m_probe_bring_up.writeProbeConfiguration(port, readcheck);
}

bool ORBE_Controller_Library::selectElectrode(unsigned port, int channel, int /*shank*/, int bank) {
    return m_probe_settings.selectElectrode(port, channel, bank);
}

bool ORBE_Controller_Library::setGain(unsigned port, int channel, int ap_gain, int lfp_gain) {
    return m_probe_settings.setGain(port, channel, ap_gain, lfp_gain);
}

bool ORBE_Controller_Library::getGain(unsigned port, int channel, int* ap_gain, int* lfp_gain) {
    return m_probe_settings.getGain(port, channel, ap_gain, lfp_gain);
}

bool ORBE_Controller_Library::setReference(unsigned port, int channel, int /*shank*/, int reference,
                                           int int_ref_bank) {
    return m_probe_settings.setReference(port, channel, reference, int_ref_bank);
}

bool ORBE_Controller_Library::setAPCornerFrequency(unsigned port, int channel, bool disable) {
    return m_probe_settings.setAPCornerFrequency(port, channel, disable);
}

bool ORBE_Controller_Library::setStdb(unsigned port, int channel, bool standby) {
    return m_probe_settings.setStdb(port, channel, standby);
}

bool ORBE_Controller_Library::get_lfp_gain(unsigned port, int channel, int* lfp_gain) {
    return m_probe_settings.get_lfp_gain(port, channel, lfp_gain);
}

void ORBE_Controller_Library::clear_all_electrode_to_bank_assignments(unsigned port) {
    m_probe_settings.clear_all_electrode_to_bank_assignments(port);
}

bool ORBE_Controller_Library::setADCCalibration(unsigned port, const char* path) {
    return m_probe_settings.setADCCalibration(port, path);
}

bool ORBE_Controller_Library::setGainCalibration(unsigned port, const char* path) {
    return m_probe_settings.setGainCalibration(port, path);
}

bool ORBE_Controller_Library::readProbeSN(unsigned port, unsigned long long* sn) {
    return m_probe_identity.readProbeSN(port, sn);
}

bool ORBE_Controller_Library::readProbePN(unsigned port, char* buffer, unsigned length) {
    return m_probe_identity.readProbePN(port, buffer, length);
}

bool ORBE_Controller_Library::readHSPN(unsigned port, char* buffer, unsigned length) {
    return m_probe_identity.readHSPN(port, buffer, length);
}

bool ORBE_Controller_Library::dump_eeprom(unsigned port, const char* path, unsigned count) {
    return m_probe_identity.dump_eeprom(port, path, count);
}

bool ORBE_Controller_Library::dump_flex_eeprom(unsigned port, const char* path, unsigned count) {
    return m_probe_identity.dump_flex_eeprom(port, path, count);
}

bool ORBE_Controller_Library::dump_hs_eeprom(unsigned port, const char* path, unsigned count) {
    return m_probe_identity.dump_hs_eeprom(port, path, count);
}

bool ORBE_Controller_Library::set_bist_signal_mode(unsigned port, bool enable) {
    return m_self_tests.set_bist_signal_mode(port, enable);
}

bool ORBE_Controller_Library::bist_start_PBRS(unsigned port) {
    return m_self_tests.bist_start_PBRS(port);
}

bool ORBE_Controller_Library::bist_stop_PBRS(unsigned port, int* errors) {
    return m_self_tests.bist_stop_PBRS(port, errors);
}

bool ORBE_Controller_Library::bist_Probe_SR(unsigned port) {
    return m_self_tests.bist_Probe_SR(port);
}

bool ORBE_Controller_Library::bist_Eeproms(unsigned port) {
    return m_self_tests.bist_Eeproms(port);
}

bool ORBE_Controller_Library::bist_IIC(unsigned port) {
    return m_self_tests.bist_IIC(port);
}

bool ORBE_Controller_Library::bist_HB(unsigned port) {
    return m_self_tests.bist_HB(port);
}

bool ORBE_Controller_Library::bist_PSB(unsigned port) {
    return m_self_tests.bist_PSB(port);
}

bool ORBE_Controller_Library::bist_Signal(unsigned port) {
    return m_self_tests.bist_Signal(port);
}

void ORBE_Controller_Library::set_self_test_directory(std::string directory) {
    m_self_tests.set_self_test_directory(std::move(directory));
}

bool ORBE_Controller_Library::program_flash(const char* path, unsigned address,
                                            const Flash_Progress_Listener& listener) {
    return m_flash.program_flash(path, address, listener);
}

std::unique_ptr<ORBE_HW_Info> ORBE_Controller_Library::read_ORBE_HW_info() {
    return m_flash.read_ORBE_HW_info();
}

bool ORBE_Controller_Library::program_ORBE_HW_info(const ORBE_HW_Info& info) {
    return m_flash.program_ORBE_HW_info(info);
}

void ORBE_Controller_Library::prepare_for_streaming() {
    m_stream.prepare_for_streaming();
}

bool ORBE_Controller_Library::prepare_for_simulation_streaming(const std::string& path) {
    return m_stream.prepare_for_simulation_streaming(path);
}

void ORBE_Controller_Library::set_prompt_delivery(std::uint32_t transfer_bytes, std::uint32_t super_frames) {
    m_stream.set_prompt_delivery(transfer_bytes, super_frames);
}

void ORBE_Controller_Library::set_stopping_despite_errors(bool stops) {
    m_stream.set_stopping_despite_errors(stops);
}

void ORBE_Controller_Library::set_dropping_left_over_answers(bool drops) {
    m_box.modules().uart().set_dropping_left_over_answers(drops);
}

void ORBE_Controller_Library::set_NP_sample_listener(std::weak_ptr<demux::I_Sample_Listener> listener,
                                                     unsigned port) {
    m_stream.set_NP_sample_listener(std::move(listener), port);
}

void ORBE_Controller_Library::play_from_beginning_in_real_time() {
    m_stream.play_from_beginning_in_real_time();
}

void ORBE_Controller_Library::enable_streaming(bool enable_np, std::initializer_list<unsigned> np_ports,
                                               bool enable_rhd, std::initializer_list<unsigned> rhd_streams,
                                               bool soft_trigger) {
    m_stream.enable_streaming(enable_np, np_ports, enable_rhd, rhd_streams, soft_trigger);
}

void ORBE_Controller_Library::disable_streaming() {
    m_stream.disable_streaming();
}

void ORBE_Controller_Library::disable_data_sources() {
    m_stream.disable_data_sources();
}

void ORBE_Controller_Library::capture_raw_data(const std::string& path) {
    m_stream.capture_raw_data(path);
}

void ORBE_Controller_Library::begin_raw_capture() {
    m_stream.begin_raw_capture();
}

void ORBE_Controller_Library::end_raw_capture() {
    m_stream.end_raw_capture();
}

std::optional<Raw_Capture_State> ORBE_Controller_Library::raw_capture_state() const {
    return m_stream.raw_capture_state();
}

demux::Stream_Damage ORBE_Controller_Library::get_stream_damage(unsigned stream) const {
    return m_stream.get_stream_damage(stream);
}

bool ORBE_Controller_Library::pump_data_to_demux() {
    return m_stream.pump_data_to_demux();
}

void ORBE_Controller_Library::wait_until_delivered() {
    m_stream.wait_until_delivered();
}

void ORBE_Controller_Library::drop_unfinished_blocks() {
    m_stream.drop_unfinished_blocks();
}

void ORBE_Controller_Library::send_soft_trigger() {
    m_box.modules().configurator().soft_trigger_pulse();
}

void ORBE_Controller_Library::set_hw_trigger_ttl_source(unsigned char index) {
    m_box.modules().configurator().set_hw_trigger_ttl_source(index);
}

void ORBE_Controller_Library::set_ttl_out(unsigned value) {
    m_box.modules().okelly_adapter().set_ttl_out_value(value);
}

unsigned ORBE_Controller_Library::get_ttl_in() {
    return m_box.modules().okelly_adapter().get_ttl_in_value();
}

void ORBE_Controller_Library::set_NP_aqustion_listener(std::weak_ptr<demux::I_L2_Demux_CH_Results> listener,
                                                       unsigned port, bool via_gain_filter) {
    m_stream.set_NP_aqustion_listener(std::move(listener), port, via_gain_filter);
}

void ORBE_Controller_Library::set_RHD_aqustion_listener(std::weak_ptr<demux::I_RHD_Frame_Listener> listener) {
    m_stream.set_RHD_aqustion_listener(std::move(listener));
}

void ORBE_Controller_Library::save_stream_listeners() {
    m_stream.save_stream_listeners();
}

void ORBE_Controller_Library::restore_stream_listeners() {
    m_stream.restore_stream_listeners();
}

void ORBE_Controller_Library::finalize_stream() {
    m_stream.finalize_stream();
}

} // namespace Pelgar::ORBE
