// Layer: device controller. The front of one ORBE box for as long as a basestation is open: bring-up, FPGA
// identity, probe bring-up, self tests, flash, streaming and the DMA pump. Hands each operation to the part
// that owns what it needs. Operations run on the host's threads, `pump_data_to_demux` on the pump thread;
// several wait in fixed steps, as each says.
#pragma once

#include "bist/Port_Self_Tests.h"
#include "common/Export.h"
#include "connection/Box_Connection.h"
#include "controller/Box_Bring_Up.h"
#include "flash/Box_Flash.h"
#include "ports/E_ORBE_Init_Config.h"
#include "ports/Probe_Bring_Up.h"
#include "ports/Probe_Identity.h"
#include "ports/Probe_Ports.h"
#include "ports/Probe_Settings.h"
#include "probe/I_L2_Demux_CH_Results.h"
#include "probe/I_Sample_Listener.h"
#include "raw_capture/Raw_Capture.h"
#include "rhd/I_RHD_Frame_Listener.h"
#include "rows/Stream_Damage.h"
#include "streaming/Box_Stream.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>

namespace Pelgar::ORBE {

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
    // The same as the box shows it now, also while it streams. Throws std::runtime_error when it is not open;
    // without a meaning in simulation mode, where every register reads the same.
    unsigned char get_np_port_status_now() const;
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
    bool setStdb(unsigned port, int channel, bool standby);

    // The LFP gain code that was set, which getGain does not tell. Throws std::out_of_range for a channel
    // that there is not.
    bool get_lfp_gain(unsigned port, int channel, int* lfp_gain);

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

    // For hosts that see data as they come. Before one of the two above.
    // Reads the stream in transfers of so many bytes (a whole number of pages, at most 1 MiB) instead of
    // 1 MiB, and hands a port's super frames on as soon as there are so many.
    void set_prompt_delivery(std::uint32_t transfer_bytes, std::uint32_t super_frames);
    // Sources are switched off, too, after a probe's link or a read has failed: the registers are there all
    // the same, and what goes on sending would be taken for the next run.
    void set_stopping_despite_errors(bool stops);
    // What a late or damaged answer of a probe's link leaves behind is dropped before the next frame is sent,
    // instead of being taken for the beginning of every answer that follows. When the box is open.
    void set_dropping_left_over_answers(bool drops);
    // Announces a port's samples (index 0..3) to the listener, which is held weakly, and corrects their gain
    // around the middle of their ten bits. After `pre_init`.
    void set_NP_sample_listener(std::weak_ptr<demux::I_Sample_Listener> listener, unsigned port);

    // Plays the recording from its beginning, 30,000 samples a second, to its last whole row. Not while
    // another thread pumps.
    void play_from_beginning_in_real_time();

    // Switches data sources on: probe ports by index 0..3 and RHD data streams by number 0..31.
    void enable_streaming(bool enable_np, std::initializer_list<unsigned> np_ports, bool enable_rhd,
                          std::initializer_list<unsigned> rhd_streams, bool soft_trigger);
    void disable_streaming();
    void disable_data_sources();

    // What was wrong with the stream of a port (index 0..3) or that of RHD (4), since construction
    // (`Async_NP_And_RHD_Demux::get_stream_damage`). Any thread.
    demux::Stream_Damage get_stream_damage(unsigned stream) const;

    // Moves one buffer into the demultiplexer. False when the read failed or the recording has ended. Pump
    // thread; blocks in the driver's read, or 10 ms in simulation mode.
    bool pump_data_to_demux();

    // Writes what is pumped from now on into a file of that name, each run into one of its own, beside the
    // demultiplexing and without slowing it; what has been written stays when the box is closed. Before
    // pumping. Throws std::bad_alloc and std::system_error.
    void capture_raw_data(const std::string& path);
    // A run is what is pumped between these two. They do nothing without the above.
    void begin_raw_capture();
    void end_raw_capture();
    // Nothing where nothing is captured. Any thread.
    std::optional<Raw_Capture_State> raw_capture_state() const;

    // What was pumped from the box since construction, in bytes modulo 2^32. Any thread.
    std::uint32_t get_total_bytes_read() const { return m_stream.get_total_bytes_read(); }

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
    // The two self tests as functions for those who own a controller.
    friend bool execute_psb_test(ORBE_Controller_Library&, unsigned, const std::string&);
    friend bool execute_bist_signal_test(ORBE_Controller_Library&, unsigned, const std::string&);

    void log_mode() const;

    // Each part has its own state; what a part needs of others it is given here. They are released in reverse
    // order: the probe link first, then the demultiplexer, the back-end last.
    Box_Connection m_box;
    Box_Stream m_stream{m_box, m_ports};
    Probe_Ports m_ports{m_box};
    Box_Bring_Up m_bring_up{m_box, m_ports};
    Probe_Bring_Up m_probe_bring_up{m_box, m_ports};
    Probe_Settings m_probe_settings{m_ports};
    Probe_Identity m_probe_identity{m_box, m_ports};
    Port_Self_Tests m_self_tests{m_box, m_ports, m_bring_up.locks(), m_probe_bring_up, m_stream};
    Box_Flash m_flash{m_box};
};

} // namespace Pelgar::ORBE
