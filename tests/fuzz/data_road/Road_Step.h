// Fuzzing: the steps of an input of the data road, behind six bytes that set the road up (Road_Input.cpp,
// read_settings).
#pragma once

namespace Pelgar::ORBE::test::road_step {

// What follows a step's byte stands beside it. Other bytes count by their remainder, but that only the byte
// itself makes a whole block.
enum Step : unsigned {
    end_transfer,
    super_frames,   // port and count in a byte: 0 to 3 and, above, 1 to 16
    turns,          // byte: the streams whose bits are set
    rhd_frames,     // byte n: 1 to 64 frames
    row,            // byte id, 14 bytes
    raw,            // byte n, n bytes
    skip_rows,      // byte id, byte n
    skip_frames,    // byte port, word n
    set_frame,      // byte port and, above, bits 19..16, word: the rest of the frame's number
    skip_rhd,       // word n
    set_rhd_stamp,  // two words
    set_ttl,        // two words
    set_adc,        // word
    flip,           // word, byte
    cut,            // byte n
    leave_out_rows, // byte from the end, byte n
    repeat_rows,    // the same
    exchange_rows,  // byte from the end, byte distance
    set_byte,       // byte from the end, byte place in the row, byte
    work,           // byte: who
    resync,
    forget,
    gains, // byte
    read,
    restart,
    pause,
    whole_block, // byte port
    step_count,
};

} // namespace Pelgar::ORBE::test::road_step
