// Layer: device controller. Owns one ORBE box for as long as a basestation is open: bring-up, FPGA identity,
// probe bring-up, streaming and the DMA pump. Operations run on the host's threads, `pump_data_to_demux` on
// the pump thread; several wait in fixed steps, as each says.
#pragma once

#include "common/Export.h"
#include "common/Relaxed.h"
#include "connection/A_ORBE_Controller.h"
#include "controller/E_ORBE_Init_Config.h"
#include "controller/Page_Aligned_Buffer.h"
#include "flash/Flash_Progress.h"
#include "flash/ORBE_HW_Info.h"
#include "gain/C_L2_CH_Gain_Fix_Filter.h"
#include "probe/I_L2_Demux_CH_Results.h"
#include "probe_link/M_I2C_Over_GSML.h"
#include "probe_link/M_NP_Probe_Control.h"
#include "rhd/I_RHD_Frame_Listener.h"
#include "rows/C_Async_PSB_And_RHD_Demux.h"
#include "wire/Main_mux_transfer_buffer_wrapper.h"

#include <array>
#include <cstdint>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <thread>

namespace Pelgar::ORBE {

// What `m_current_error_level` holds. Above `healthy` the streams' registers are left alone.
enum class Error_Level : std::int32_t { healthy = 0, probe_link = 1, driver_open = 2, dma_pump = 3 };

class ORBE_EXPORT ORBE_Controller_Library {
public:
    // Builds the back-end of the mode; touches no hardware.
    explicit ORBE_Controller_Library(bool simulation);

    // The same on a back-end that the caller has made.
    ORBE_Controller_Library(std::shared_ptr<A_ORBE_Controller> controller, bool simulation);

    // Stops the stream and joins the demultiplexer.
    ~ORBE_Controller_Library();
    ORBE_Controller_Library(const ORBE_Controller_Library&) = delete;
    ORBE_Controller_Library& operator=(const ORBE_Controller_Library&) = delete;

    // ---- Lifecycle and FPGA identity. Exceptions of the back-end pass through.

    // Opens the driver connection, also anew; what the ports are configured to stays. False, and the error
    // level, tell that there is no usable box.
    bool open();

    // Whether the FPGA runs the Neuropixels design; when it does not and `switch_allowed`, reboots it into
    // that design (10 s) and opens the driver again.
    bool check_and_switch_firmware_if_nec(bool switch_allowed);

    // Reboots the FPGA from a flash address. False when the configuration port does not answer.
    bool icap_boot(unsigned address);

    // Resets the box, powers the probe ports and waits up to 5 s for a headstage link to lock; then makes the
    // probe-link objects. False when no port locks.
    bool pre_init(bool one_mode);

    // The design signature as eight lower-case hexadecimal digits.
    std::string get_design_identifier_from_fpga();
    // Day, month and year of the FPGA design as dd-mm-yyyy.
    std::string get_design_build_date();
    std::string get_library_version() const;
    // Degrees Celsius.
    float get_fpga_temperature() const;
    unsigned get_fpga_efuse() const;
    // Probe ports that the FPGA design offers; 0 before `pre_init`.
    unsigned char get_np_port_count_from_fpga_signature() const;
    // Bit i: the link of port i + 1 was locked when `pre_init` looked.
    unsigned char get_cached_np_port_status() const;
    bool is_in_simulation_mode() const;
    Error_Level get_current_error_level() const;

    // ---- Probe bring-up and identity. Ports are indices 0..3. Unless said otherwise an error of the probe
    // link is logged and answered with false. The box has one UART for all ports, so that calls must not
    // overlap.

    // Checks the serializer and deserializer of the port's headstage and starts the serializer. A link error
    // raises the error level.
    bool probe_init_part_1(unsigned port);

    // Initialises the probe. A link error raises the error level.
    bool probe_init_part_2(unsigned port, E_ORBE_Init_Config init_config);

    // Shifts the port's configuration into the probe, twice and checked when `readcheck`.
    bool writeProbeConfiguration(unsigned port, bool readcheck);

    // These change the port's configuration, and the gain filter with it, not the probe; false when a value
    // is rejected. Throw std::out_of_range("invalid array<T, N> subscript") for a port of 4 or more, and
    // std::runtime_error before `pre_init`. A probe has one shank, so that `shank` is not looked at.
    bool selectElectrode(unsigned port, int channel, int shank, int bank);
    bool setGain(unsigned port, int channel, int ap_gain, int lfp_gain);
    bool getGain(unsigned port, int channel, int* ap_gain, int* lfp_gain);
    bool setReference(unsigned port, int channel, int shank, int reference, int int_ref_bank);
    bool setAPCornerFrequency(unsigned port, int channel, bool disable);

    // Disconnects every channel from its electrodes in the configuration, but for the reference channel.
    void clear_all_electrode_to_bank_assignments(unsigned port);

    // Load a calibration file (CSV) into the port's configuration and into its gain filter.
    bool setADCCalibration(unsigned port, const char* path);
    bool setGainCalibration(unsigned port, const char* path);

    // Read the EEPROMs of probe and headstage; texts are cut to `length` characters including the closing
    // zero.
    bool readProbeSN(unsigned port, unsigned long long* sn);
    bool readProbePN(unsigned port, char* buffer, unsigned length);
    bool readHSPN(unsigned port, char* buffer, unsigned length);

    // Write the first `count` bytes (at most 256) of an EEPROM into a file. The probe's EEPROM lies on its
    // flex, so that both names mean the same one.
    bool dump_eeprom(unsigned port, const char* path, unsigned count);
    bool dump_flex_eeprom(unsigned port, const char* path, unsigned count);
    bool dump_hs_eeprom(unsigned port, const char* path, unsigned count);

    // ---- Self tests of a port. In simulation mode, where every register reads the same, those of the
    // EEPROMs, of the probe's registers and of the link succeed without a test, and a PRBS test cannot be
    // stopped.

    // The test signal into the pixels, or back to recording.
    bool set_bist_signal_mode(unsigned port, bool enable);
    // Pseudo-random bits over the headstage's link; `*errors` is the number of wrong ones.
    bool bist_start_PBRS(unsigned port);
    bool bist_stop_PBRS(unsigned port, int* errors);
    // Uploads the configuration and has the probe check it.
    bool bist_Probe_SR(unsigned port);
    // Reads the first 16 bytes of both EEPROMs twice and compares.
    bool bist_Eeproms(unsigned port);
    // Writes two patterns into a test register of the probe, reads them back and restores the register.
    bool bist_IIC(unsigned port);
    // Whether the port's link is locked now.
    bool bist_HB(unsigned port);
    // Whether the probe's test pattern arrives on all channels (execute_psb_test), and whether the test
    // signal is seen on all of them (execute_bist_signal_test). Both take the stream for themselves and fail
    // while streams are enabled; they leave the probe in its test mode and, unless the error level is raised,
    // the streams off. In simulation mode they judge a recording.
    bool bist_PSB(unsigned port);
    bool bist_Signal(unsigned port);
    // Where those two find their recordings when no stream has been prepared yet; at first the build's
    // resource directory.
    void set_self_test_directory(std::string directory);

    // ---- The configuration flash, which holds the FPGA's designs and the hardware record. What goes wrong
    // is printed. Erasing and writing poll for up to 480 s a sector; an operation that fails may leave the
    // flash partly erased or written.

    // Erases as many 64 KiB sectors from byte `address`, the beginning of one, as the file takes and writes
    // the file's whole pieces of 16 bytes, over the hardware record too. False, with the flash left as it
    // was, for a file that cannot be opened or would run past the end of the flash.
    bool program_flash(const char* path, unsigned address, const Flash_Progress_Listener& listener = {});

    // The record; nothing when the flash cannot be read.
    std::unique_ptr<ORBE_HW_Info> read_ORBE_HW_info();

    // Replaces the record. Of its sector the first 256 bytes survive, the record's own place apart.
    bool program_ORBE_HW_info(const ORBE_HW_Info& info);

    // ---- Streaming.

    // Hardware mode: allocates the buffers, starts the demultiplexer and hands the receive buffer to the
    // driver. Lets the exceptions of the back-end through; it can be called again then.
    void prepare_for_streaming();

    // Simulation mode: opens the recorded raw DMA file and starts the demultiplexer. False when the file
    // cannot be opened.
    bool prepare_for_simulation_streaming(const std::string& path);

    // Switches data sources on: probe ports by index 0..3 and RHD data streams by number 0..31.
    void enable_streaming(bool enable_np, std::initializer_list<unsigned> np_ports, bool enable_rhd,
                          std::initializer_list<unsigned> rhd_streams, bool soft_trigger);
    void disable_streaming();
    void disable_data_sources();

    // Moves one buffer into the demultiplexer. False when the read failed or the recording has ended. Pump
    // thread; blocks in the driver's read, or 10 ms in simulation mode.
    bool pump_data_to_demux();

    // What was pumped from the box since construction, in bytes modulo 2^32. Any thread.
    std::uint32_t get_total_bytes_read() const { return m_total_bytes_read; }

    // The first blocks until the channel values of all whole blocks, and the RHD frames, that were pumped so
    // far have reached their listeners; the second forgets what does not fill a block or a frame. Not while
    // another thread pumps.
    void wait_until_delivered();
    void drop_unfinished_blocks();

    void send_soft_trigger();
    void set_hw_trigger_ttl_source(unsigned char index);
    void set_ttl_out(unsigned value);
    unsigned get_ttl_in();

    // Routes the channel results of a port (index 0..3), through the port's gain filter when
    // `via_gain_filter`. Throws std::out_of_range("invalid array<T, N> subscript") or, without the filter,
    // std::runtime_error for another port. The listener is held weakly.
    void set_NP_aqustion_listener(std::weak_ptr<demux::I_L2_Demux_CH_Results> listener, unsigned port,
                                  bool via_gain_filter);
    void set_RHD_aqustion_listener(std::weak_ptr<demux::I_RHD_Frame_Listener> listener);
    void save_stream_listeners();
    void restore_stream_listeners();

    // Stops the sources, ends and joins the demultiplexer and logs what was processed.
    void finalize_stream();

private:
    friend struct Controller_Test_Peer;

    static constexpr std::size_t port_count = demux::np_port_count;

    void log_mode() const;
    void log_fpga_identity();
    bool check_np_ports_status();
    std::uint8_t np_port_mask() const;

    void assign_uart(unsigned port);
    NP_Probe_Control_Module& probe_control(unsigned port);
    C_L2_CH_Gain_Fix_Filter& gain_filter(unsigned port);
    bool np_control_init(unsigned port, E_ORBE_Init_Config init_config);
    bool dump_eeprom_of_device(unsigned port, std::uint8_t device, const char* path, unsigned count);
    // Runs an operation on a port to which the UART is routed first; an exception is logged under the
    // operation's name and fails it.
    bool run_on_port(const char* name, unsigned port, const std::function<bool()>& operation);
    // The link to the headstages. Throws std::runtime_error before `pre_init`.
    I2C_Over_GSML_Module& probe_link();
    bool skips_bist(const char* name) const;
    // The same as `run_on_port` for a test that needs the stream; fails while streams are enabled.
    bool run_with_stream(const char* name, unsigned port, const std::function<bool()>& operation);

    void start_main_demux_thread();
    void stop_main_demux_thread();
    void run_main_demux();
    void allocate_transfer_buffer();
    bool pump_hw_data_to_demux();
    bool pump_simulation_data_to_demux();

    // Reads away what the driver still holds and releases the receive buffer. Not part of the normal end of a
    // stream: leaving the driver's buffers alone there is deliberate.
    void purge_read_buffers();

    void set_error_level(Error_Level level);
    bool is_healthy() const;

    std::shared_ptr<A_ORBE_Controller> m_controller;
    demux::Async_NP_And_RHD_Demux m_demux;

    std::thread m_main_demux_thread;
    bool m_main_demux_thread_started = false;
    static constexpr std::uint32_t m_page_aligned_recv_buffer_size = demux::transfer_buffer_capacity;
    Page_Aligned_Buffer m_page_aligned_recv_buffer;
    std::unique_ptr<demux::Main_mux_transfer_buffer_wrapper> m_xfer_buffer;
    Relaxed<std::uint32_t> m_total_bytes_read{0};
    std::uint32_t m_read_counter = 0;
    std::uint8_t m_pump_print_counter = 0;
    bool m_prepared_for_streaming = false;
    Relaxed<bool> m_streams_enabled{false};
    Relaxed<bool> m_sim_paused{false};
    std::ifstream m_sim_file;

    Relaxed<Error_Level> m_current_error_level{Error_Level::healthy};
    bool m_simulation_mode;
    std::uint8_t m_np_port_count_parameter_from_fpga = 0;

    std::unique_ptr<I2C_Over_GSML_Module> m_i2c;
    std::array<std::unique_ptr<NP_Probe_Control_Module>, port_count> m_np_probe_control;
    std::array<std::shared_ptr<C_L2_CH_Gain_Fix_Filter>, port_count> m_gain_filters;
    std::uint8_t m_np_port_pll_status = 0;

    std::array<std::weak_ptr<demux::I_L2_Demux_CH_Results>, port_count> m_saved_np_listeners;
    std::weak_ptr<demux::I_RHD_Frame_Listener> m_saved_rhd_listener;

    std::string m_self_test_directory;
};

} // namespace Pelgar::ORBE
