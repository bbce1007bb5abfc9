# The names under which hosts import the functions, as cmake/Export_Names.cmake makes them. Run as the script itself, with
# the same parameters; fails with a message.
include(${SOURCE_DIR}/cmake/Export_Names.cmake)

file(STRINGS ${OUTPUT_DIR}/exports.def exports)
file(STRINGS ${OUTPUT_DIR}/names.def names)

function(expect_line lines line)
    if(NOT line IN_LIST ${lines})
        message(FATAL_ERROR "no line \"${line}\" in the ${lines}")
    endif()
endfunction()

set(string_result "?AV?$basic_string@DU?$char_traits@D@std@@V?$allocator@D@2@@std@@")
expect_line(exports "EXPORTS")
expect_line(exports "    \"?openBS@Neuropixels@@YA?AW4NP_ErrorCode@1@H@Z\" = _ZN11Neuropixels6openBSEi")
expect_line(exports "    \"?np_dbg_setlevel@Neuropixels@@YAXH@Z\" = _ZN11Neuropixels15np_dbg_setlevelEi")
expect_line(exports
    "    \"?setSyncClockFrequency@Neuropixels@@YA?AW4NP_ErrorCode@1@HH@Z\" = _ZN11Neuropixels21setSyncClockFrequencyEii")
expect_line(exports "    np_openBS")
expect_line(exports "    np_dbg_setlevel")
expect_line(exports "    np_start_acquisition")
expect_line(exports "    np_bs_get_fpga_design_label")
expect_line(names "LIBRARY \"${DLL_NAME}\"")
foreach(name
        "?openBS@Neuropixels@@YA?AW4NP_ErrorCode@1@H@Z"
        "?getDeviceList@Neuropixels@@YAHPEAUbasestationID@1@H@Z"
        "?tryGetSlotID@Neuropixels@@YA_NPEBUbasestationID@1@PEAH@Z"
        "?readHSPN@Neuropixels@@YA?AW4NP_ErrorCode@1@HHPEAD_K@Z"
        "?readElectrodeData@Neuropixels@@YA?AW4NP_ErrorCode@1@HHHPEAUelectrodePacket@1@PEAHH@Z"
        "?unpackData@Neuropixels@@YA?AW4NP_ErrorCode@1@PEBUnp_packet_t@1@PEAFHPEAH@Z"
        "?dbg_setlogcallback@Neuropixels@@YAXHP6AXH_JPEBD1@Z@Z"
        "?bs_get_fpga_design_label@Neuropixels@@YA${string_result}XZ"
        "?bs_get_fpga_design_build_date@Neuropixels@@YA${string_result}XZ"
        "?setSyncClockFrequency@Neuropixels@@YA?AW4NP_ErrorCode@1@HN@Z"
        "?setSyncClockFrequency@Neuropixels@@YA?AW4NP_ErrorCode@1@HH@Z"
        "np_openBS"
        "np_dbg_setlevel")
    expect_line(names "    \"${name}\"")
endforeach()

list(LENGTH exports export_lines)
list(LENGTH names name_lines)
math(EXPR expected_name_lines "${export_lines} + 1")
if(NOT name_lines EQUAL expected_name_lines)
    message(FATAL_ERROR "${export_lines} lines of exports, but ${name_lines} of names")
endif()
