#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/convert/StandardValues.h"
#include "tests/convert/TypeXml.h"

// Raw values of the standard types and of types of the tests' own, each with the JSON that its
// definition demands. Scaled members are a * 10^b * (raw + c); the arithmetic stands beside the
// rows where it is not plain to see.
namespace zavri::korvat {
namespace {

using test::arraySize;
using test::bits;
using test::cpt;
using test::decode;
using test::dynamicArray;
using test::encode;
using test::enumeration;
using test::floating;
using test::invalid;
using test::nameOfRow;
using test::nvt;
using test::reference;
using test::scalar;
using test::scaling;
using test::signedBits;
using test::structure;
using test::unionOf;
using test::ValueRow;
using test::wholeRaw;

TypeManager& standardTypes() {
  static TypeManager manager = test::makeStandardTypes();
  return manager;
}

class StandardValue : public testing::TestWithParam<ValueRow> {};

TEST_P(StandardValue, HasTheJsonOfItsDefinition) {
  EXPECT_EQ(decode(standardTypes(), GetParam()), GetParam().json);
}

TEST_P(StandardValue, ComesBackFromThatJson) {
  EXPECT_EQ(encode(standardTypes(), GetParam()), wholeRaw(standardTypes(), GetParam()));
}

// --- One number ---

const std::vector<ValueRow> kNumbers = {
    {"AmpZero", "SNVT_amp", "0000", "0.0"},
    {"AmpStep", "SNVT_amp", "0001", "0.1"},
    {"AmpHighest", "SNVT_amp", "7FFF", "3276.7"},  // 32767 / 10
    {"AmpLowest", "SNVT_amp", "8000", "-3276.8"},  // -32768 / 10
    {"AmpMinusStep", "SNVT_amp", "FFFF", "-0.1"},  // -1 / 10
    {"BtuKilo", "SNVT_btu_kilo", "FFFF", "65535"},
    {"Count", "SNVT_count", "0102", "258"},  // 1 * 256 + 2
    {"CountIncrease", "SNVT_count_inc", "7FFF", "32767"},
    {"CountDecrease", "SNVT_count_inc", "FFFE", "-2"},
    {"EnergyWithTopBit", "SNVT_elec_kwh", "8000", "32768"},
    {"Flow", "SNVT_flow", "03E8", "1000"},          // 3 * 256 + 232
    {"LevelFull", "SNVT_lev_cont", "C8", "100.0"},  // 200 * 5 / 10
    {"LevelStep", "SNVT_lev_cont", "01", "0.5"},
    {"PowerHighest", "SNVT_power", "FFFF", "6553.5"},
    {"PowerThreeSteps", "SNVT_power", "0003", "0.3"},
    {"PartsPerMillion", "SNVT_ppm", "0190", "400"},  // 1 * 256 + 144
    {"Pressure", "SNVT_press", "FC18", "-100.0"},    // 0xFC18 = 65536 - 1000
    {"Speed", "SNVT_speed", "000F", "1.5"},
    {"OldTemperatureOfZero", "SNVT_temp", "0AB4", "0.0"},      // 0x0AB4 = 2740
    {"OldTemperatureOfARoom", "SNVT_temp", "0B86", "21.0"},    // (2950 - 2740) / 10
    {"OldTemperatureLowest", "SNVT_temp", "0000", "-274.0"},   // -2740 / 10
    {"OldTemperatureHighest", "SNVT_temp", "FFFF", "6279.5"},  // (65535 - 2740) / 10
    {"Volt", "SNVT_volt", "08FC", "230.0"},                    // 2300 / 10
    {"VoltKilo", "SNVT_volt_kilo", "FFF6", "-1.0"},            // -10 / 10
    {"VoltMilli", "SNVT_volt_mil", "000B", "1.1"},
    {"Frequency", "SNVT_freq_hz", "01F4", "50.0"},  // 500 / 10
    {"Lux", "SNVT_lux", "FFFE", "65534"},
    {"PercentFull", "SNVT_lev_percent", "4E20", "100.0"},  // 20000 * 5 / 1000
    {"PercentStep", "SNVT_lev_percent", "0001", "0.005"},
    {"PercentLowest", "SNVT_lev_percent", "8000", "-163.84"},                // -32768 * 5 / 1000
    {"PercentMarkerWithoutKeyword", "SNVT_lev_percent", "7FFF", "163.835"},  // 32767 * 5 / 1000
    {"Rpm", "SNVT_rpm", "0BB8", "3000"},                                     // 11 * 256 + 184
    {"TemperatureZero", "SNVT_temp_p", "0000", "0.0"},
    {"TemperatureOfARoom", "SNVT_temp_p", "0866", "21.5"},     // 8 * 256 + 102 = 2150
    {"TemperatureBelowZero", "SNVT_temp_p", "F6A0", "-24.0"},  // 0xF6A0 = 65536 - 2400
    {"TemperatureLowest", "SNVT_temp_p", "954B", "-273.17"},   // 0x954B = 65536 - 27317
    {"TemperatureStep", "SNVT_temp_p", "0001", "0.01"},
    {"TemperatureMarkerWithoutKeyword", "SNVT_temp_p", "7FFF", "327.67"},
    {"TemperatureDifference", "SNVT_temp_diff_p", "FF9C", "-1.0"},  // -100 / 100
    {"Seconds", "SNVT_time_sec", "0258", "60.0"},                   // 600 / 10
    {"Minutes", "SNVT_time_min", "05A0", "1440"},                   // 5 * 256 + 160
    {"PressurePascal", "SNVT_press_p", "8000", "-32768"},
    {"Address", "SNVT_address", "4000", "16384"},
    {"Enthalpy", "SNVT_enthalpy", "1388", "50.0"},  // 5000 / 100
    {"Humidity", "SNVT_abs_humid", "FFFE", "655.34"},
    {"ScheduleValue", "SNVT_sched_val", "FF", "255"},
};

const std::vector<ValueRow> kFloats = {
    {"AnglePi", "SNVT_angle_f", "40490FDB", "3.1415927"},  // the single next to pi
    {"AngleMinusOne", "SNVT_angle_f", "BF800000", "-1.0"},
    {"CountHalf", "SNVT_count_inc_f", "3F000000", "0.5"},
    {"FlowSmallest", "SNVT_flow_f", "00000001", "1e-45"},  // 2^-149
    // The shortest text of the largest single is a decimal above it.
    {"PressureLargest", "SNVT_press_f", "7F7FFFFF", "3.4028235e+38"},
    {"Pressure", "SNVT_press_f", "47C5E680",
     "101325.0"},  // 0x18BCD = binary 1.1000101111001101 * 2^16
    // -(1 + 17/256) * 2^8: sign 1, exponent 127 + 8, fraction 0001 0001 0...
    {"TemperatureLow", "SNVT_temp_f", "C3888000", "-273.0"},
    {"TemperatureTenth", "SNVT_temp_f", "41AC0000", "21.5"},  // 1.34375 * 2^4
    {"EnergyMinusZero", "SNVT_btu_f", "80000000", "-0.0"},
};

const std::vector<ValueRow> kEnumerations = {
    {"DayFirst", "SNVT_date_day", "00", R"("DAY_SUN")"},
    {"DayMinusOne", "SNVT_date_day", "FF", R"("DAY_NUL")"},
    {"DayWithoutName", "SNVT_date_day", "07", R"("7")"},
    {"DayLowestByte", "SNVT_date_day", "80", R"("-128")"},
    {"LevelOn", "SNVT_lev_disc", "04", R"("ST_ON")"},
    {"TelephoneError", "SNVT_telcom", "14", R"("TEL_ERROR")"},
    {"ConfigurationExternal", "SNVT_config_src", "01", R"("CFG_EXTERNAL")"},
    {"OverrideDefault", "SNVT_override", "02", R"("OV_DEFAULT")"},
    {"EmergencyFire", "SNVT_hvac_emerg", "05", R"("EMERG_FIRE")"},
    {"ModeCool", "SNVT_hvac_mode", "03", R"("HVAC_COOL")"},
    {"OccupancyStandby", "SNVT_occupancy", "03", R"("OC_STANDBY")"},
    {"EntryFire", "SNVT_ent_opmode", "09", R"("EM_FIRE")"},
    {"FlowOut", "SNVT_flow_dir", "01", R"("FD_OUT")"},
};

// --- Text ---

const std::vector<ValueRow> kTexts = {
    {"Ascii", "SNVT_str_asc",
     "48656C6C6F 0000000000 0000000000 0000000000 0000000000 0000000000 00",
     R"({"ascii":"Hello"})"},
    {"AsciiWithoutEnd", "SNVT_str_asc",
     "41414141414141414141 42424242424242424242 43434343434343434343 44",
     R"({"ascii":"AAAAAAAAAABBBBBBBBBBCCCCCCCCCCD"})"},
    {"AsciiOfIso8859", "SNVT_str_asc", "5AFC72696368 00", R"({"ascii":"Zürich"})"},
    {"International", "SNVT_str_int", "00 0048 00E9 20AC 0000",
     R"({"char_set":0,"wide_char":"Hé€"})"},
    {"InternationalWithSurrogates", "SNVT_str_int", "01 D83D DE00 0000",
     R"({"char_set":1,"wide_char":"😀"})"},
    {"EventName", "SNVT_date_event", "0007 FFFF 466572696500",
     R"({"days_to_active":7,"days_to_inactive":-1,"name":"Ferie"})"},
    {"SceneNameInUtf8", "SCPTsceneName", "00 4BC3BC63686500",
     R"({"encoding":"CE_UTF_8","name":"Küche"})"},
    // An encoding of two bytes a character does not make text of an array of single bytes.
    {"SceneNameInUnknownEncoding", "SCPTsceneName", "01 4142 00000000000000000000",
     R"({"encoding":"1","name":[65,66,0,0,0,0,0,0,0,0,0,0]})"},
    {"ValueName", "SCPTvalueName", "4F6E00", R"({"name":"On"})"},
    {"Location", "SCPTlocation", "4C6F626279 00", R"({"ascii":"Lobby"})"},
    {"GeographicName", "SNVT_geo_loc",
     // 8.55 * 10^7 = 85500000 = 0x0518A060; -33.0 * 10^7 = -330000000 = 0xEC549980
     "0518A060 EC549980 43CC0000 5A48 0000000000000000000000000000000000",
     R"({"longitude":8.55,"latitude":-33.0,"elevation":408.0,"name":"ZH"})"},  // 1.59375 * 2^8
};

// --- Structures of numbers ---

const std::vector<ValueRow> kStructures = {
    {"Date", "SNVT_date_cal", "07E8021D", R"({"year":2024,"month":2,"day":29})"},  // 7 * 256 + 232
    {"DateMarkerWithoutKeyword", "SNVT_date_cal", "FFFF0000",
     R"({"year":65535,"month":0,"day":0})"},
    {"TimeStamp", "SNVT_time_stamp", "07CF0C1F173B3B",  // 7 * 256 + 207
     R"({"year":1999,"month":12,"day":31,"hour":23,"minute":59,"second":59})"},
    {"ZeroSpan", "SNVT_zerospan", "FC184E20",  // -1000 * 5 / 1000, 20000 * 5 / 10000
     R"({"zero":-5.0,"span":10.0})"},
    {"ElapsedTime", "SNVT_elapsed_tm", "000117001E03E7",
     R"({"day":1,"hour":23,"minute":0,"second":30,"millisecond":999})"},
    {"Currency", "SNVT_currency", "06FEFFFFFF85",  // 0xFF..85 = -(0x7A + 1)
     R"({"currency":"CU_BRITAIN_POUND","power_of_10":-2,"value":-123})"},
    {"CurrencyLowest", "SNVT_currency", "118080000000",
     R"({"currency":"CU_GERMANY_MARK","power_of_10":-128,"value":-2147483648})"},
    {"FilePosition", "SNVT_file_pos", "7FFFFFFF0020", R"({"rw_ptr":2147483647,"rw_length":32})"},
    {"MultiplierAndDivisor", "SNVT_muldiv", "000AFFFF", R"({"multiplier":10,"divisor":65535})"},
    {"ObjectRequest", "SNVT_obj_request", "000302",
     R"({"object_id":3,"object_request":"RQ_UPDATE_STATUS"})"},
    {"SwitchOn", "SNVT_switch", "C801", R"({"value":100.0,"state":1})"},
    {"SwitchHalf", "SNVT_switch", "6501", R"({"value":50.5,"state":1})"},  // 101 * 5 / 10
    {"SwitchMarkerWithoutKeyword", "SNVT_switch", "00FF", R"({"value":0.0,"state":-1})"},
    {"Setpoints", "SNVT_temp_setpt", "08FC09C40BB80834070803E8",  // 2300 2500 3000 2100 1800 1000
     R"({"occupied_cool":23.0,"standby_cool":25.0,"unoccupied_cool":30.0,)"
     R"("occupied_heat":21.0,"standby_heat":18.0,"unoccupied_heat":10.0})"},
    {"OverrideOfFlow", "SNVT_hvac_overid", "02D8F00064",  // 0xD8F0 = 65536 - 10000
     R"({"state":"HVO_FLOW_VALUE","percent":-50.0,"flow":100})"},
    {"HvacStatus", "SNVT_hvac_status", "014E20000000000001FFFF00",
     R"({"mode":"HVAC_HEAT","heat_output_primary":100.0,"heat_output_secondary":0.0,)"
     R"("cool_output":0.0,"econ_output":0.005,"fan_output":-0.005,"in_alarm":0})"},
    {"Scene", "SNVT_scene", "00FF", R"({"function":"SC_RECALL","scene_number":255})"},
    {"SettingOfARotation", "SNVT_setting", "05C84650",  // 18000 * 2 / 100
     R"({"function":"SET_STATE","setting":100.0,"rotation":360.0})"},
    {"SettingOfANegativeRotation", "SNVT_setting", "0301B9B1",  // -17999 * 2 / 100
     R"({"function":"SET_UP","setting":0.5,"rotation":-359.98})"},
    {"ScheduledOccupancy", "SNVT_tod_event", "0001003C",
     R"({"current_state":"OC_OCCUPIED","next_state":"OC_UNOCCUPIED","time_to_next_state":60})"},
    {"ControlRequest", "SNVT_ctrl_req", "0001FFFFC8",
     R"({"receiver_id":1,"sender_id":65535,"sender_prio":200})"},
    {"PrivacyZone", "SNVT_privacyzone", "010A0100",
     R"({"action":"PZ_ENABLE","number":10,"camera_id":256})"},
    {"PumpSet", "SNVT_pumpset_mn", "0400030001FF0001",
     R"({"main_pump":"MOTOR_AT_NORMAL","booster_pump":"MOTOR_STOPPED",)"
     R"("priority_level":"PR_LEVEL_3","process_ready":"BOOL_FALSE",)"
     R"("emergency_stop_activated":"BOOL_TRUE","main_pump_drive_enabled":"BOOL_NUL",)"
     R"("booster_pump_drive_enabled":"BOOL_FALSE","maintenance_required":"BOOL_TRUE"})"},
    {"SecurityState", "SNVT_sec_state", "131234",  // 0x13 = 19; 0x1234 = 4660
     R"({"state":"SSE_CONFIRM_UNSUPPORTED","identity":4660})"},
    {"PreciseTimeStamp", "SNVT_time_stamp_p", "FFFFFFFF63", R"({"second":-1,"hundredths":0.99})"},
    {"LogTransfer", "SNVT_log_fx_status", "01020003C8",
     R"({"requestor_subnet":1,"requestor_node":2,"log_number":3,"complete":100.0})"},
    {"SceneProperty", "SCPTscene", "0164A600",  // 100 * 5 / 10; 0xA6 = -90, times 2
     R"({"scene_number":1,"setting":50.0,"rotation":-180.0,"unoccupied_scene":0})"},
    {"SceneTiming", "SCPTsceneTiming", "000AFFFF", R"({"fade_time":1.0,"delay_time":6553.5})"},
    {"TimeEvent", "SCPTtimeEvent", "00173BFF",
     R"({"record_type":"EMT_END_OF_LIST","hour":23,"minute":59,"event_mode":255})"},
    {"DateIndex", "SCPTdayDateIndex", "010C1F0C0102",
     R"({"day_1":1,"month_1":12,"day_2":31,"month_2":12,"event_mode_index":258})"},
    {"OccupancyBehaviour", "SCPToccupancyBehavior", "FF00010203",
     R"({"ob_nul_value":"OC_NUL","ob_occupied_value":"OC_OCCUPIED",)"
     R"("ob_unoccupied_value":"OC_UNOCCUPIED","ob_bypass_value":"OC_BYPASS",)"
     R"("ob_standby_value":"OC_STANDBY"})"},
    {"OccupancyThresholds", "SCPToccupancyThresholds", "0032FF",
     R"({"occupied":0,"standby_to_occupied":50,"unoccupied_to_occupied":255})"},
    {"ControlPriority", "SCPTcontrolPriority", "C8", "200"},
    {"MajorVersion", "SCPTobjMajVer", "FF", "255"},
};

// --- Bit fields ---

const std::vector<ValueRow> kBitFields = {
    // 1000 0000 0000 0001
    {"StateOfBothEnds", "SNVT_state", "8001",
     R"({"bit0":1,"bit1":0,"bit2":0,"bit3":0,"bit4":0,"bit5":0,"bit6":0,"bit7":0,)"
     R"("bit8":0,"bit9":0,"bit10":0,"bit11":0,"bit12":0,"bit13":0,"bit14":0,"bit15":1})"},
    // 0101 0000 0000 1111
    {"StateOfAPattern", "SNVT_state", "500F",
     R"({"bit0":0,"bit1":1,"bit2":0,"bit3":1,"bit4":0,"bit5":0,"bit6":0,"bit7":0,)"
     R"("bit8":0,"bit9":0,"bit10":0,"bit11":0,"bit12":1,"bit13":1,"bit14":1,"bit15":1})"},
    // 1000 0000, 0000 0001, 0101 0101, 1010 0101
    {"ObjectStatus", "SNVT_obj_status", "0001800155A5",
     R"({"object_id":1,"invalid_id":1,"invalid_request":0,"disabled":0,"out_of_limits":0,)"
     R"("open_circuit":0,"out_of_service":0,"mechanical_fault":0,"feedback_failure":0,)"
     R"("over_range":0,"under_range":0,"electrical_fault":0,"unable_to_measure":0,)"
     R"("comm_failure":0,"fail_self_test":0,"self_test_in_progress":0,"locked_out":1,)"
     R"("manual_control":0,"in_alarm":1,"in_override":0,"report_mask":1,"programming_mode":0,)"
     R"("programming_fail":1,"alarm_notify_disabled":0,"reset_complete":1,"reserved2":165})"},
    // 110 00000: three bits of 8
    {"RegisterValue", "SNVT_reg_val", "FFFFFFFE0AC0",
     R"({"raw":-2,"unit":"RVU_KWH","nr_decimals":6})"},
    // 01 00 00 01, 01 00 01 and two bits that nothing covers
    {"TransferTable", "SNVT_trans_table",
     "3F800000 C0000000 00000000 40400000 40800000 40A00000 40C00000 4144",
     R"({"point":[1.0,-2.0,0.0,3.0,4.0,5.0,6.0],"interp_pts_0_to_1":1,"interp_pts_1_to_2":0,)"
     R"("interp_pts_2_to_3":0,"interp_pts_3_to_4":1,"interp_pts_4_to_5":1,)"
     R"("interp_pts_5_to_6":0,"interp_pts_6_to_0":1})"},
    // 0110 01 00: the fields of a structure that ends inside its byte
    {"Chiller", "SNVT_chlr_status", "020364",
     R"({"chlr_run_mode":"CHLR_RUN","chlr_op_mode":"HVAC_COOL","chlr_state":{"in_alarm":0,)"
     R"("run_enabled":1,"local":1,"limited":0,"chw_flow":0,"condw_flow":1}})"},
    // Four bytes of fields, of the last one only three bits: 101 00000. An enumeration follows.
    {"EntryStatus", "SNVT_ent_status", "800100A006",
     R"({"unlocked":1,"locked":0,"security_locked":0,"closed":0,"open":0,"in_alarm":0,)"
     R"("in_error_cond":0,"open_pre_alarm":0,"open_alarm":0,"service_alarm":0,"tamper":0,)"
     R"("entry_req":0,"exit_req":0,"key_req":0,"safety_ext_req":0,"emergency_req":1,)"
     R"("unable_lock":0,"unable_unlock":0,"stuck":0,"forced_open":0,"forced_close":0,)"
     R"("opening":0,"closing":0,"moving":0,"stopped":1,"safety_alarm":0,"unknown_state":1,)"
     R"("cmd_fb":"EM_OPEN"})"},
    {"WashingMachine", "SNVT_clothes_w_m", "BF",  // 1 0 111111
     R"({"door_ajar":1,"drain_on":0,"reserved":63})"},
    {"Schedule", "SCPTschedule", "83FFFF",  // 1 0000011
     R"({"temporary":1,"schedule_priority":3,"time_value_index":65535})"},
    {"SourceAddress", "SCPTsourceAddress", "017F",  // 0 1111111
     R"({"subnet":1,"reserved":0,"node":127})"},
};

// --- Structures in structures, arrays, references and unions ---

const std::vector<ValueRow> kNested = {
    {"Alarm", "SNVT_alarm",
     "414243444546 0102 F3 03 0010 0A0B0C0D 07E8 01 02 03 04 05 0006 FFFEFDFC",
     R"({"location":[65,66,67,68,69,70],"object_id":258,"alarm_type":"AL_HEADER",)"
     R"("priority_level":"PR_LEVEL_3","index_to_SNVT":16,"value":[10,11,12,13],"year":2024,)"
     R"("month":1,"day":2,"hour":3,"minute":4,"second":5,"millisecond":6,)"
     R"("alarm_limit":[255,254,253,252]})"},
    {"Preset", "SNVT_preset", "010002C8000000 FFFF 01 02 03 0004",
     R"({"learn":"LN_LEARN_CURRENT","selector":2,"value":[200,0,0,0],"day":65535,"hour":1,)"
     R"("minute":2,"second":3,"millisecond":4})"},
    {"NvType", "SNVT_nv_type", "9FFFFF0000000000 03 0069 05 02 0001 FFFE 0000",
     R"({"type_program_ID":[159,255,255,0,0,0,0,0],"type_scope":3,"type_index":105,)"
     R"("type_category":"NVT_CAT_SIGNED_LONG","type_length":2,"scaling_factor_a":1,)"
     R"("scaling_factor_b":-2,"scaling_factor_c":0})"},
    // 16 characters, 4 and 2 bytes; and 6, 1, 1, 1 bytes over the same place
    {"FileStatusAsDescriptor", "SNVT_file_status",
     "00 0003 0001 626F6F742E62696E0000000000000000 00000400 0001",
     R"({"status":"FS_XFER_OK","number_of_files":3,"selected_file":1,"adr":{"descriptor":)"
     R"({"file_info":"boot.bin","size":1024,"type":1},"address":{"domain_id":)"
     R"([98,111,111,116,46,98],"domain_length":105,"subnet":110,"node":0}}})",
     // 105 is no length of a domain.
     R"({"status":"FS_XFER_OK","number_of_files":3,"selected_file":1,"adr":{"descriptor":)"
     R"({"file_info":"boot.bin","size":1024,"type":1}}})"},
    // 1000 0001 0010 0000 1111 1111 in both alternatives
    {"DeviceStatus", "SNVT_dev_status", "008120FF",
     R"({"device_select":"DV_PUMP_CTRL","dev_type":{"pump_ctrl":{"device_fault":1,)"
     R"("supply_fault":0,"reserved1_2":0,"speed_low":0,"speed_high":0,"reserved1_5":0,)"
     R"("setpt_out_of_range":0,"reserved1_7":1,"local_control":0,"reserved2_1":0,"running":1,)"
     R"("reserved2_3":0,"remote_press":0,"remote_flow":0,"remote_temp":0,"reserved2_7":0,)"
     R"("reserved3_0_7":255},"valve_pos":{"running":1,"adapting":0,"initializing":0,)"
     R"("local_control":0,"setpt_out_of_range":0,"remote_ctrl_signal":0,"reserved1_6_7":1,)"
     R"("hw_emergency":0,"sw_emergency":0,"reserved2_2_7":32,"reserved3_0_7":255}}})"},
    // 01 000010, then five structures deep with a reference to a number of two bytes
    {"WashingCycle", "SNVT_clothes_w_c",
     "02 08 00 42 01 03 28 1E 01 0A 02 FF 04B0 05 00 01 0F 04 003C",
     R"({"cycle":"CWC_SPIN","subcycle":"CWS_SPINNING","rervd":0,"action":{"power_on":0,)"
     R"("run_mode":1,"rsrvd2_7":2},"function":{"program":"CWP_BOIL","wash":{"load_level":)"
     R"("ST_HIGH","temp":40,"time":30,"prewash":"BOOL_TRUE"},"rinse":{"temp":10,"repeat":2,)"
     R"("option":"RIN_NUL"},"spin":{"speed":1200,"time":5,"hold":"BOOL_FALSE"},"dry":)"
     R"({"temp":1,"duration":{"time":15,"dryness":"ST_ON"}}},"time_remaining":60})"},
    {"LogStatus", "SNVT_log_status",
     "00 0001 64 00000002 FFFFFFFF 80000000 7FFFFFFF 0000000A01 0000000B63",
     R"({"status":"LS_ENABLED","log_number":1,"level":50.0,"record_count":2,"byte_count":-1,)"
     R"("total_record_count":-2147483648,"records_since_notification":2147483647,)"
     R"("current_notify_time":{"second":10,"hundredths":0.01},)"
     R"("previous_notify_time":{"second":11,"hundredths":0.99}})"},
    {"LogRequest", "SNVT_log_fx_request", "0001 00000002 0000000300 0000000432",
     R"({"requested_log":1,"record_count":2,"start_time":{"second":3,"hundredths":0.0},)"
     R"("end_time":{"second":4,"hundredths":0.5}})"},
    {"LoadOffsets", "SNVT_load_offsets",
     "03E8 2D FC18 A6",  // 1000 and -1000 * 5 / 1000
     R"({"standby_offset":5.0,"standby_rotation":90.0,"demand_response_offset":-5.0,)"
     R"("demand_response_rotation":-180.0})"},
    {"InvertedOutput", "SCPTinvrtOut", "04", R"("ST_ON")"},
    {"MaxReceiveTime", "SCPTmaxRcvTime", "012C", "30.0"},  // 300 / 10
    {"MaxReceiveInterval", "SCPTmaxRcvT", "0000000001000A",
     R"({"day":0,"hour":0,"minute":0,"second":1,"millisecond":10})"},
    {"Gain", "SCPTgain", "00030002", R"({"multiplier":3,"divisor":2})"},
    {"BypassTime", "SCPTbypassTime", "001E", "30"},
    {"PowerUpState", "SCPTpwrUpState", "C8FF", R"({"value":100.0,"state":-1})"},
    {"PowerUpSetting", "SCPTpowerupState", "04000000",
     R"({"function":"SET_STOP","setting":0.0,"rotation":0.0})"},
    {"MinLevelDelta", "SCPTminDeltaLevel", "02", "1.0"},
    {"BaseValue", "SCPTbaseValue",
     "0000000101 20",  // 001 00000
     R"({"raw":1,"unit":"RVU_W","nr_decimals":1})"},
    {"Hysteresis", "SCPTtemperatureHysteresis", "0032", "0.5"},
    {"DynamicAssignment", "SCPTnvDynamicAssignment",
     "0001 0002 0003 0000000000000000 00 0069 05 02 0001 FFFE 0000",
     R"({"nv_index":1,"fblock_index":2,"member_number":3,"nv_type":{"type_program_ID":)"
     R"([0,0,0,0,0,0,0,0],"type_scope":0,"type_index":105,"type_category":)"
     R"("NVT_CAT_SIGNED_LONG","type_length":2,"scaling_factor_a":1,"scaling_factor_b":-2,)"
     R"("scaling_factor_c":0}})"},
    {"EffectivePeriod", "SCPTeffectivePeriod", "07E80101FFFF0C1F",
     R"({"start":{"year":2024,"month":1,"day":1},"end":{"year":-1,"month":12,"day":31}})"},
    {"ScheduleTimeValue", "SCPTscheduleTimeValue", "571E64",  // 0 1 010111
     R"({"invalid":0,"terminator":1,"hour":23,"minute":30,"value":100})"},
    {"WeeklySchedule", "SCPTweeklySchedule", "0000 0001 0002 0003 0004 0005 FFFF",
     R"({"schedule_index":[0,1,2,3,4,5,65535]})"},
    {"TimePeriod", "SCPTtimePeriod", "0005",
     R"({"units":"IOM_MINUTE","value":{"minutes_interval":5,"date_of_month":5,"hour_of_day":5,)"
     R"("day_of_week":"DAY_FRI","hours_interval":5}})"},
    {"ButtonColor", "SCPTbuttonColor", "FF00800001FE",
     R"({"on_color":{"red":255,"green":0,"blue":128},"off_color":{"red":0,"green":1,"blue":254}})"},
    {"LogFileHeader", "SCPTlogFileHeader",
     "0801 01 00 FFFE 0000000A 0000000100 FFFFFFFF32",  // 8 * 256 + 1
     R"({"file_type":2049,"major_version_number":1,"minor_version_number":0,)"
     R"("log_number":65534,"record_count":10,"start_time":{"second":1,"hundredths":0.0},)"
     R"("end_time":{"second":-1,"hundredths":0.5}})"},
    {"GroupMembership", "SCPTlightingGroupMembership", "0102040810204080",
     R"({"flags":[1,2,4,8,16,32,64,128]})"},
    {"RandomInterval", "SCPTrandomizationInterval", "000A0064",
     R"({"earliest_time_offset":1.0,"latest_time_offset":10.0})"},
};

INSTANTIATE_TEST_SUITE_P(Numbers, StandardValue, testing::ValuesIn(kNumbers), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Floats, StandardValue, testing::ValuesIn(kFloats), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Enumerations, StandardValue, testing::ValuesIn(kEnumerations), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Texts, StandardValue, testing::ValuesIn(kTexts), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Structures, StandardValue, testing::ValuesIn(kStructures), nameOfRow);
INSTANTIATE_TEST_SUITE_P(BitFields, StandardValue, testing::ValuesIn(kBitFields), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Nested, StandardValue, testing::ValuesIn(kNested), nameOfRow);

// --- Values that JSON shows but that are not taken back ---

struct RefusedRow {
  ValueRow value;
  std::string problem;
};

class RefusedValue : public testing::TestWithParam<RefusedRow> {};

TEST_P(RefusedValue, HasTheJsonOfItsDefinition) {
  EXPECT_EQ(decode(standardTypes(), GetParam().value), GetParam().value.json);
}

TEST_P(RefusedValue, IsNotTakenBack) {
  EXPECT_EQ(encode(standardTypes(), GetParam().value), "refused: " + GetParam().problem);
}

const std::string kOutside = "the value is outside the member's limits";

const std::vector<RefusedRow> kRefused = {
    {{"LevelAboveItsLimit", "SNVT_lev_cont", "FF", "127.5"}, ": " + kOutside},  // 255 * 5 / 10
    {{"CountInfinite", "SNVT_count_inc_f", "7F800000", "null"}, ": a number is missing"},
    {{"FlowNotANumber", "SNVT_flow_f", "7FC00000", "null"}, ": a number is missing"},
    {{"LatitudeLowest", "SNVT_geo_loc", "00000000 80000000",
      // -2147483648 / 10^7
      R"({"longitude":0.0,"latitude":-214.7483648,"elevation":0.0,"name":""})"},
     "latitude: " + kOutside},
    // 01 11 00 01, 01 01 00 00: the second field takes 0 and 1
    {{"TransferTable", "SNVT_trans_table",
      "3F800000 C0000000 00000000 40400000 40800000 40A00000 40C00000 7150",
      R"({"point":[1.0,-2.0,0.0,3.0,4.0,5.0,6.0],"interp_pts_0_to_1":1,"interp_pts_1_to_2":3,)"
      R"("interp_pts_2_to_3":0,"interp_pts_3_to_4":1,"interp_pts_4_to_5":1,)"
      R"("interp_pts_5_to_6":1,"interp_pts_6_to_0":0})"},
     "interp_pts_1_to_2: " + kOutside},
};

INSTANTIATE_TEST_SUITE_P(Types, RefusedValue, testing::ValuesIn(kRefused),
                         [](const auto& info) { return info.param.value.name; });

// --- Invalid markers of the standard types ---

class StandardMarker : public testing::TestWithParam<ValueRow> {
 protected:
  void SetUp() override { standardTypes().setSupportInvalidKeyword(true); }
  void TearDown() override { standardTypes().setSupportInvalidKeyword(false); }
};

TEST_P(StandardMarker, IsTheKeyword) {
  EXPECT_EQ(decode(standardTypes(), GetParam()), GetParam().json);
}

TEST_P(StandardMarker, ComesBackFromTheKeyword) {
  EXPECT_EQ(encode(standardTypes(), GetParam()), wholeRaw(standardTypes(), GetParam()));
}

const std::vector<ValueRow> kMarkers = {
    {"Temperature", "SNVT_temp_p", "7FFF", R"("invalid")"},
    {"TemperatureBesideIt", "SNVT_temp_p", "7FFE", "327.66"},
    {"Percent", "SNVT_lev_percent", "7FFF", R"("invalid")"},
    {"Seconds", "SNVT_time_sec", "FFFF", R"("invalid")"},
    {"Rpm", "SNVT_rpm", "FFFF", R"("invalid")"},
    {"Switch", "SNVT_switch", "C8FF", R"({"value":100.0,"state":"invalid"})"},
    {"Year", "SNVT_date_cal", "FFFF0000", R"({"year":"invalid","month":0,"day":0})"},
    // One marker is the highest number and the other the lowest.
    {"EventDays", "SNVT_date_event", "7FFF8000",
     R"({"days_to_active":"invalid","days_to_inactive":"invalid","name":""})"},
    {"EventDaysExchanged", "SNVT_date_event", "80007FFF",
     R"({"days_to_active":-32768,"days_to_inactive":32767,"name":""})"},
    {"Quad", "SNVT_geo_loc", "7FFFFFFFCA5B1700",
     // 0xCA5B1700 = -900000000, divided by 10^7
     R"({"longitude":"invalid","latitude":-90.0,"elevation":0.0,"name":""})"},
    {"ThroughAReference", "SNVT_load_offsets", "7FFF80000000",
     R"({"standby_offset":"invalid","standby_rotation":"invalid","demand_response_offset":0.0,)"
     R"("demand_response_rotation":0.0})"},
    {"InAnArray", "SCPTweeklySchedule", "FFFF000000000000000000000000",
     R"({"schedule_index":["invalid",0,0,0,0,0,0]})"},
    {"NegativeYear", "SCPTeffectivePeriod", "FFFF010107E80101",
     R"({"start":{"year":"invalid","month":1,"day":1},"end":{"year":2024,"month":1,"day":1}})"},
    {"Zero", "SCPTdeviceGroupID", "0000", R"("invalid")"},
    {"PropertyThroughAReference", "SCPTmaxRcvTime", "FFFF", R"("invalid")"},
};

INSTANTIATE_TEST_SUITE_P(Types, StandardMarker, testing::ValuesIn(kMarkers), nameOfRow);

// --- Types of our own, for what the standard types do not have ---

class OwnValue : public testing::TestWithParam<ValueRow> {
 protected:
  static void SetUpTestSuite() {
    _files = new test::TempCatalogue;
    _files->write(TypeId::StdPrefix, "enums", test::sharedEnums());
    _files->write(TypeId::StdPrefix, "nvs", test::sharedNvs() + ownNvs());
    _files->write(TypeId::StdPrefix, "cps",
                  cpt("Limit", reference("SNVT_half")) + cpt("Limits", reference("SCPTLimit")));
    _manager = new TypeManager(_files->makeManager());
  }

  static void TearDownTestSuite() {
    delete _manager;
    delete _files;
  }

  static std::string ownNvs() {
    return nvt("_double", floating("double float")) +
           nvt("_unsigned_quad", scalar("unsigned quad", scaling(1, -3, 0))) +
           nvt("_signed_bits", structure({{"a", signedBits(0, 3)},
                                          {"b", signedBits(3, 1)},
                                          {"c", signedBits(4, 4, scaling(25, -1, 1))}})) +
           nvt("_matrix",
               structure({{"row", scalar("signed short", arraySize(2))}}, arraySize(2))) +
           nvt("_readings",
               structure({{"list",
                           structure({{"at", reference("SNVT_word")},
                                      {"mode", enumeration("power_t")},
                                      {"value",
                                       scalar("signed long", scaling(1, -1, 0) + invalid("0"))}}),
                           arraySize(2)}})) +
           nvt("_wide", structure({{"encoding", enumeration("char_encoding_t")},
                                   {"text", scalar("unsigned char", arraySize(8))}})) +
           nvt("_deep", structure({{"u", unionOf({{"pair", reference("SNVT_alias_2")},
                                                  {"flags", structure({{"high", bits(0, 4)},
                                                                       {"low", bits(4, 4)}})}})},
                                   {"words", reference("SNVT_word_alias"), arraySize(2)}})) +
           nvt("_largest", scalar("unsigned short", dynamicArray(1, 3)));
  }

  static test::TempCatalogue* _files;
  static TypeManager* _manager;
};

test::TempCatalogue* OwnValue::_files = nullptr;
TypeManager* OwnValue::_manager = nullptr;

TEST_P(OwnValue, HasTheJsonOfItsDefinition) {
  EXPECT_EQ(decode(*_manager, GetParam()), GetParam().json);
}

TEST_P(OwnValue, ComesBackFromThatJson) {
  EXPECT_EQ(encode(*_manager, GetParam()), wholeRaw(*_manager, GetParam()));
}

const std::vector<ValueRow> kOwnValues = {
    {"DoubleTenth", "SNVT_double", "3FB999999999999A", "0.1"},
    {"DoubleMinusTwo", "SNVT_double", "C000000000000000", "-2.0"},
    {"DoubleThird", "SNVT_double", "3FD5555555555555", "0.3333333333333333"},
    {"DoubleSmallest", "SNVT_double", "0000000000000001", "5e-324"},
    {"UnsignedQuadHighest", "SNVT_unsigned_quad", "FFFFFFFF", "4294967.295"},
    {"UnsignedQuadTopBit", "SNVT_unsigned_quad", "80000000", "2147483.648"},
    // 100 1 1000: -4, -1, (-8 + 1) * 25 / 10
    {"SignedBitsLowest", "SNVT_signed_bits", "98", R"({"a":-4,"b":-1,"c":-17.5})"},
    // 011 0 0111: 3, 0, (7 + 1) * 25 / 10
    {"SignedBitsHighest", "SNVT_signed_bits", "67", R"({"a":3,"b":0,"c":20.0})"},
    // 111 1 1111: all of them -1, and (-1 + 1) * 25 / 10
    {"SignedBitsOfOnes", "SNVT_signed_bits", "FF", R"({"a":-1,"b":-1,"c":0.0})"},
    {"Matrix", "SNVT_matrix", "01FF807F", R"([{"row":[1,-1]},{"row":[-128,127]}])"},
    {"Readings", "SNVT_readings", "0001 01 FFFB 0002 FF 0005",
     R"({"list":[{"at":1,"mode":"PWR_ON","value":-0.5},{"at":2,"mode":"PWR_NUL","value":0.5}]})"},
    {"TextOfIso8859", "SNVT_wide", "FF E9E8 000000000000", R"({"encoding":"CE_NUL","text":"éè"})"},
    {"TextOfUtf8", "SNVT_wide", "00 E282ACF09F988000", R"({"encoding":"CE_8","text":"€😀"})"},
    {"TextOfUtf16", "SNVT_wide", "01 20ACD83DDE000041", R"({"encoding":"CE_16","text":"€😀A"})"},
    {"TextOfUtf32", "SNVT_wide", "02 000020AC0001F600", R"({"encoding":"CE_32","text":"€😀"})"},
    // 0x5A is 90, and 0101 1010 in the other alternative
    {"UnionOfReferences", "SNVT_deep", "5AFF 0100 FFFF",
     R"({"u":{"pair":{"a":90,"b":-1},"flags":{"high":5,"low":10}},"words":[256,65535]})"},
    {"DynamicArrayOfFullSize", "SNVT_largest", "010203", "[1,2,3]"},
    {"PropertyThroughReferences", "SCPTLimits", "15", "10.5"},  // 21 * 5 / 10
};

INSTANTIATE_TEST_SUITE_P(Types, OwnValue, testing::ValuesIn(kOwnValues), nameOfRow);

}  // namespace
}  // namespace zavri::korvat

std::set<std::string> zavri::test::typesOfValueTable() {
  using namespace korvat;
  std::set<std::string> types;
  for (const auto* rows :
       {&kNumbers, &kFloats, &kEnumerations, &kTexts, &kStructures, &kBitFields, &kNested}) {
    for (const ValueRow& row : *rows) types.insert(row.type);
  }
  return types;
}
