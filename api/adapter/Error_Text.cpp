#include "adapter/Error_Text.h"

#include <array>

namespace Pelgar::ORBE::npoe_adapter {

namespace {

using namespace Neuropixels;

struct Error_Text {
    NP_ErrorCode code;
    const char* text;
};

constexpr std::array error_texts{
    Error_Text{SUCCESS, "success"},
    Error_Text{FAILED, "the operation failed"},
    Error_Text{ALREADY_OPEN, "already open"},
    Error_Text{NOT_OPEN, "not open"},
    Error_Text{IIC_ERROR, "I2C error"},
    Error_Text{VERSION_MISMATCH, "the box could not be brought up"},
    Error_Text{PARAMETER_INVALID, "invalid parameter"},
    Error_Text{UART_ACK_ERROR, "no acknowledge over the UART"},
    Error_Text{TIMEOUT, "time-out"},
    Error_Text{WRONG_CHANNEL, "no such channel"},
    Error_Text{WRONG_BANK, "no such electrode bank"},
    Error_Text{WRONG_REF, "no such reference"},
    Error_Text{WRONG_INTREF, "no such internal reference"},
    Error_Text{CSV_READ_ERROR, "the CSV file could not be read"},
    Error_Text{BIST_ERROR, "self test failed"},
    Error_Text{FILE_OPEN_ERROR, "the file could not be opened"},
    Error_Text{READBACK_ERROR, "the probe reads back something else than was written"},
    Error_Text{READBACK_ERROR_FLEX, "the flex EEPROM reads back something else than was written"},
    Error_Text{READBACK_ERROR_HS, "the headstage EEPROM reads back something else than was written"},
    Error_Text{READBACK_ERROR_BSC, "the connect board EEPROM reads back something else than was written"},
    Error_Text{TIMESTAMPNOTFOUND, "time stamp not found"},
    Error_Text{FILE_IO_ERR, "file input or output error"},
    Error_Text{OUTOFMEMORY, "out of memory"},
    Error_Text{LINK_IO_ERROR, "link input or output error"},
    Error_Text{NO_LOCK, "the link is not locked"},
    Error_Text{WRONG_AP, "no such AP gain"},
    Error_Text{WRONG_LFP, "no such LFP gain"},
    Error_Text{ERROR_SR_CHAIN_1, "shift register chain 1 failed its check"},
    Error_Text{ERROR_SR_CHAIN_2, "shift register chain 2 failed its check"},
    Error_Text{ERROR_SR_CHAIN_3, "shift register chain 3 failed its check"},
    Error_Text{IO_ERROR, "input or output error"},
    Error_Text{NO_SLOT, "no basestation in the slot"},
    Error_Text{WRONG_SLOT, "no such slot"},
    Error_Text{WRONG_PORT, "no such port"},
    Error_Text{STREAM_EOF, "end of the stream"},
    Error_Text{HDRERR_MAGIC, "packet header without its marker"},
    Error_Text{HDRERR_CRC, "packet header with a wrong checksum"},
    Error_Text{WRONG_PROBESN, "the probe has another serial number"},
    Error_Text{PROGRAMMINGABORTED, "programming was aborted"},
    Error_Text{VALUE_INVALID, "invalid value"},
    Error_Text{WRONG_DOCK_ID, "no such dock"},
    Error_Text{INVALID_ARGUMENT, "invalid argument"},
    Error_Text{NO_BSCONNECT, "no basestation connect board"},
    Error_Text{NO_LINK, "no link to a headstage"},
    Error_Text{NO_FLEX, "no flex"},
    Error_Text{NO_PROBE, "no probe"},
    Error_Text{NO_HST, "no headstage tester"},
    Error_Text{WRONG_ADC, "no such ADC"},
    Error_Text{WRONG_SHANK, "no such shank"},
    Error_Text{UNKNOWN_STREAMSOURCE, "no such stream source"},
    Error_Text{ILLEGAL_HANDLE, "illegal handle"},
    Error_Text{OBJECT_MISMATCH, "the object is of another kind"},
    Error_Text{WRONG_DACCHANNEL, "no such DAC channel"},
    Error_Text{WRONG_ADCCHANNEL, "no such ADC channel"},
    Error_Text{NODATA, "no data"},
    Error_Text{PROGRAMMING_FAILED, "programming failed"},
    Error_Text{NO_IMU, "no motion sensor"},
    Error_Text{NOTSUPPORTED, "not supported by this box"},
    Error_Text{NOTIMPLEMENTED, "not implemented"},
};

} // namespace

const char* error_text(NP_ErrorCode code) {
    for (const Error_Text& entry : error_texts) {
        if (entry.code == code) {
            return entry.text;
        }
    }
    return "unknown error code";
}

} // namespace Pelgar::ORBE::npoe_adapter
