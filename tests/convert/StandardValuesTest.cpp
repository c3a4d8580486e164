#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/convert/StandardValues.h"

// Raw values of the standard types that ValueTableTest.cpp leaves out, each with the JSON that its
// definition demands, converted both ways. Scaled members are a * 10^b * (raw + c); the arithmetic
// stands beside the rows where it is not plain to see.
namespace zavri::korvat {
namespace {

using test::decode;
using test::encode;
using test::nameOfRow;
using test::ValueRow;
using test::wholeRaw;

TypeManager& standardTypes() {
  static TypeManager manager = test::makeStandardTypes();
  return manager;
}

class StandardTypeValue : public testing::TestWithParam<ValueRow> {};

TEST_P(StandardTypeValue, HasTheJsonOfItsDefinition) {
  EXPECT_EQ(decode(standardTypes(), GetParam()), GetParam().json);
}

TEST_P(StandardTypeValue, ComesBackFromThatJson) {
  EXPECT_EQ(encode(standardTypes(), GetParam()), wholeRaw(standardTypes(), GetParam()));
}

// --- One number ---

const std::vector<ValueRow> kNumbers = {
    {"AmpMilli", "SNVT_amp_mil", "FE0C", "-50.0"},  // 0xFE0C = 65536 - 500
    {"AmpMilliHighest", "SNVT_amp_mil", "7FFF", "3276.7"},
    {"AngleOfACircle", "SNVT_angle", "188B", "6.283"},       // 6283 / 1000
    {"AngleHighest", "SNVT_angle", "FFFF", "65.535"},        // 65535 / 1000
    {"AngularVelocity", "SNVT_angle_vel", "FFF1", "-1.5"},   // -15 / 10
    {"BtuMega", "SNVT_btu_mega", "04D2", "1234"},            // 4 * 256 + 210
    {"Character", "SNVT_char_ascii", "41", "65"},            // 4 * 16 + 1
    {"EnergyWattHours", "SNVT_elec_whr", "FFFF", "6553.5"},  // 65535 / 10
    {"FlowMilli", "SNVT_flow_mil", "FFFE", "65534"},
    {"Length", "SNVT_length", "0005", "0.5"},
    {"LengthKilo", "SNVT_length_kilo", "2710", "1000.0"},  // 10000 / 10
    {"LengthMicro", "SNVT_length_micr", "0064", "10.0"},
    {"LengthMilli", "SNVT_length_mil", "00FE", "25.4"},  // 254 / 10
    {"Mass", "SNVT_mass", "03E7", "99.9"},               // 999 / 10
    {"MassKilo", "SNVT_mass_kilo", "02F5", "75.7"},      // 757 / 10
    {"MassMega", "SNVT_mass_mega", "000C", "1.2"},
    {"MassMilliWithTopBit", "SNVT_mass_mil", "8001", "3276.9"},  // 32769 / 10
    {"PowerKilo", "SNVT_power_kilo", "01F3", "49.9"},            // 499 / 10
    {"Resistance", "SNVT_res", "0899", "220.1"},                 // 8 * 256 + 153 = 2201
    {"ResistanceKilo", "SNVT_res_kilo", "002F", "4.7"},
    {"SoundBelowZero", "SNVT_sound_db", "ED30", "-48.16"},  // 65536 - 4816
    {"SoundLowest", "SNVT_sound_db", "8000", "-327.68"},
    {"SpeedMilli", "SNVT_speed_mil", "0539", "1.337"},  // 5 * 256 + 57 = 1337
    {"Volume", "SNVT_vol", "0BB9", "300.1"},            // 11 * 256 + 185 = 3001
    {"VolumeKilo", "SNVT_vol_kilo", "7FFF", "3276.7"},
    {"VolumeMilli", "SNVT_vol_mil", "14D3", "533.1"},                // 20 * 256 + 211 = 5331
    {"VoltDecibel", "SNVT_volt_dbmv", "FF38", "-2.0"},               // -200 / 100
    {"Grammage", "SNVT_grammage", "0320", "80.0"},                   // 800 / 10
    {"FrequencyKilo", "SNVT_freq_kilohz", "2706", "999.0"},          // 39 * 256 + 6 = 9990
    {"FrequencyMilli", "SNVT_freq_milhz", "C350", "5.0"},            // 50000 / 10000
    {"FrequencyMilliHighest", "SNVT_freq_milhz", "FFFF", "6.5535"},  // 65535 / 10000
    {"MultiplierOne", "SNVT_multiplier", "07D0", "1.0"},             // 2000 * 5 / 10000
    {"MultiplierStep", "SNVT_multiplier", "0001", "0.0005"},
    {"MultiplierHighest", "SNVT_multiplier", "FFFF", "32.7675"},  // 327675 / 10000
    {"PowerFactorOne", "SNVT_pwr_fact", "4E20", "1.0"},           // 20000 * 5 / 100000
    {"PowerFactorBelowZero", "SNVT_pwr_fact", "B5C8", "-0.95"},   // 65536 - 19000
    {"Density", "SNVT_density", "07D0", "1000.0"},                // 2000 * 5 / 10
    {"DensityHighest", "SNVT_density", "FFFF", "32767.5"},        // 65535 * 5 / 10
    {"AngleDegrees", "SNVT_angle_deg", "2328", "180.0"},          // 9000 * 2 / 100
    {"AngleDegreesLowest", "SNVT_angle_deg", "B9B1", "-359.98"},  // -17999 * 2 / 100
    {"Area", "SNVT_area", "1388", "1.0"},                         // 5000 * 2 / 10000
    {"AreaHighest", "SNVT_area", "FFFE", "13.1068"},              // 65534 * 2 / 10000
    {"HoursOfAYear", "SNVT_time_hour", "2238", "8760"},           // 34 * 256 + 56
    {"AcidityNeutral", "SNVT_ph", "1B58", "7.0"},                 // 27 * 256 + 88 = 7000
    {"AcidityMinusStep", "SNVT_ph", "FFFF", "-0.001"},
    {"RateOfRise", "SNVT_temp_ror", "FFFD", "-1.5"},            // -3 * 5 / 10
    {"RateOfRiseLowest", "SNVT_temp_ror", "8000", "-16384.0"},  // -32768 * 5 / 10
    {"VoltAlternating", "SNVT_volt_ac", "00E6", "230"},
    {"AmpAlternating", "SNVT_amp_ac", "0010", "16"},
    {"FlowPrecise", "SNVT_flow_p", "3039", "123.45"},  // 48 * 256 + 57 = 12345
    {"CountOf32Bits", "SNVT_count_32", "00010000", "65536"},
    {"CountOf32BitsHighest", "SNVT_count_32", "FFFFFFFE", "4294967294"},
    {"EnergyOf32Bits", "SNVT_elec_kwh_l", "075BCD15", "12345678.9"},          // 123456789 / 10
    {"EnergyOf32BitsLowest", "SNVT_elec_kwh_l", "80000000", "-214748364.8"},  // -2^31 / 10
    {"LogRequest", "SNVT_log_request", "0100", "256"},
    {"DeviceMajorVersion", "SCPTdevMajVer", "03", "3"},
    {"DeviceMinorVersion", "SCPTdevMinVer", "0A", "10"},
    {"ObjectMinorVersion", "SCPTobjMinVer", "FE", "254"},
    {"DeviceGroup", "SCPTdeviceGroupID", "1234", "4660"},  // 18 * 256 + 52
    {"InstalledLevel", "SCPTinstalledLevel", "00C8", "200"},
};

// Sign, exponent plus 127, and what follows the leading 1 of the fraction.
const std::vector<ValueRow> kFloats = {
    {"Amp", "SNVT_amp_f", "41200000", "10.0"},                     // 1.25 * 2^3
    {"AngularVelocity", "SNVT_angle_vel_f", "BE800000", "-0.25"},  // -2^-2
    {"Count", "SNVT_count_f", "447A0000", "1000.0"},               // 1.953125 * 2^9
    {"Length", "SNVT_length_f", "3DCCCCCD", "0.1"},                // the single next to 0.1
    {"Level", "SNVT_lev_cont_f", "427A0000", "62.5"},              // 1.953125 * 2^5
    {"Mass", "SNVT_mass_f", "3F400000", "0.75"},                   // 1.5 * 2^-1
    {"Power", "SNVT_power_f", "44BB8000", "1500.0"},               // 1.46484375 * 2^10
    {"PartsPerMillion", "SNVT_ppm_f", "43C80000", "400.0"},        // 1.5625 * 2^8
    {"Resistance", "SNVT_res_f", "40966666", "4.7"},               // the single next to 1.175 * 2^2
    {"Sound", "SNVT_sound_db_f", "C0600000", "-3.5"},              // -1.75 * 2^1
    {"Speed", "SNVT_speed_f", "42050000", "33.25"},                // 1.0390625 * 2^5
    {"SecondsOfADay", "SNVT_time_f", "47A8C000", "86400.0"},       // 1.318359375 * 2^16
    {"Volume", "SNVT_vol_f", "3E000000", "0.125"},                 // 2^-3
    {"Volt", "SNVT_volt_f", "C1400000", "-12.0"},                  // -1.5 * 2^3
    {"Energy", "SNVT_elec_whr_f", "451C4000", "2500.0"},           // 1.220703125 * 2^11
    {"Grammage", "SNVT_grammage_f", "42A00000", "80.0"},           // 1.25 * 2^6
    {"Frequency", "SNVT_freq_f", "42480000", "50.0"},              // 1.5625 * 2^5
    {"PowerFactor", "SNVT_pwr_fact_f", "BF000000", "-0.5"},        // -2^-1
    {"Density", "SNVT_density_f", "44798000", "998.0"},            // 1.94921875 * 2^9
    {"Acidity", "SNVT_ph_f", "40E80000", "7.25"},                  // 1.8125 * 2^2
    {"Turbidity", "SNVT_turbidity_f", "3E99999A", "0.3"},          // the single next to 1.2 * 2^-2
};

const std::vector<ValueRow> kEnumerations = {
    {"EvaporatorInEmergency", "SNVT_evap_state", "02", R"("EVAP_EMERG_COOLING")"},
    {"ThermostatModulating", "SNVT_therm_mode", "02", R"("THERM_MODULATING")"},
    {"DefrostForced", "SNVT_defr_mode", "01", R"("DFM_MODE_FORCED")"},
    {"DefrostEndOfAMaker", "SNVT_defr_term", "64", R"("DFT_TERM_MANUF")"},  // 100
    {"DefrostDrain", "SNVT_defr_state", "03", R"("DFS_DRAINDOWN")"},
    {"FireTest", "SNVT_fire_test", "02", R"("FT_TEST")"},
    {"FireInitiatorUniversal", "SNVT_fire_init", "10", R"("FI_UNIVERSAL")"},  // 16
    {"FireIndicatorUniversal", "SNVT_fire_indcte", "08", R"("FN_UNIVERSAL")"},
    {"ChilledCeiling", "SNVT_hvac_type", "06", R"("HVT_CHILL_CEIL")"},
    {"FaultInterrupterTripped", "SNVT_gfci_status", "02", R"("GFCI_TRIPPED")"},
    {"MotorStopping", "SNVT_motor_state", "07", R"("MOTOR_STOPPING")"},
    {"ValveOfTwoWays", "SNVT_dev_c_mode", "1B", R"("DCM_2WAY_VALVE")"},  // 27
    {"ValveWithoutName", "SNVT_dev_c_mode", "19", R"("25")"},            // between 24 and 27
    {"ValveNul", "SNVT_valve_mode", "FF", R"("VALVE_NUL")"},             // -1
    {"ValveAdapting", "SNVT_valve_mode", "04", R"("VALVE_STROKE_ADP")"},
};

// --- Structures ---

// 1 for each of the numbered bits of SNVT_state or SNVT_state_64, 0 for the others.
std::string jsonOfBits(int count, const std::set<int>& ones) {
  std::string json = "{";
  for (int i = 0; i < count; ++i) {
    json += (i == 0 ? "\"bit" : ",\"bit") + std::to_string(i) +
            "\":" + (ones.count(i) != 0 ? "1" : "0");
  }
  return json + "}";
}

const std::vector<ValueRow> kStructures = {
    {"TimeOfDay", "SNVT_date_time", "173B1E", R"({"hour":23,"minute":59,"second":30})"},
    {"SceneConfiguration", "SNVT_scene_cfg",
     "00 07 64 D8F0 000A FFFF C8",  // 100 * 5 / 10, -10000 * 2 / 100, 10 / 10, 65535 / 10
     R"({"function":"SCF_SAVE","scene_number":7,"setting":50.0,"rotation":-200.0,)"
     R"("fade_time":1.0,"delay_time":6553.5,"scene_priority":200})"},
    {"PositionOnEarth", "SNVT_earth_pos",
     // 10 000000: two fields of a bit each; 22500 / 1000 and 33200 / 1000; 1.59375 * 2^8
     "80 2F 57E4 08 81B0 43CC0000",
     R"({"latitude_direction":1,"longitude_direction":0,"latitude_deg":47,"latitude_min":22.5,)"
     R"("longitude_deg":8,"longitude_min":33.2,"height_above_sea":408.0})"},
    {"RegisterWithTime", "SNVT_reg_val_ts",
     "FFF0BDC0 0A 53 07E8 0C1F 173B3A",  // -0x000F4240; 010 1001 1
     R"({"raw":-1000000,"unit":"RVU_KWH","nr_decimals":2,"status":9,"reg_state":1,"year":2024,)"
     R"("month":12,"day":31,"hour":23,"minute":59,"second":58})"},
    {"ExclusiveControl", "SNVT_ex_control", "02 010203040506 03 7F 40",
     R"({"control_status":"EX_CONTROL_THIS_ADDR","control_device_addr":)"
     R"({"domain_id":[1,2,3,4,5,6],"domain_length":3,"subnet":127,"node":64}})"},
    {"AlarmWithText", "SNVT_alarm_2", "1E 0B 80000000 FFFE FD 50756D702031 00",
     R"({"alarm_type":"AL_FATAL_ERROR","priority_level":"PR_16","alarm_time":2147483648,)"
     R"("milliseconds":-2,"sequence_number":253,"description":"Pump 1"})"},
    // The top bit of the first byte, the next one of the second, and so on.
    {"StateOfADiagonal", "SNVT_state_64", "8040201008040201",
     jsonOfBits(64, {0, 9, 18, 27, 36, 45, 54, 63})},
    {"StateOfLastBits", "SNVT_state_64", "0000000000000007", jsonOfBits(64, {61, 62, 63})},
    {"Sunblind", "SNVT_sblnd_state", "05 C8 4650 7F 0E",  // 18000 * 2 / 100
     R"({"pos":{"function":"SET_STATE","setting":100.0,"rotation":360.0},)"
     R"("cmd_source":"SBCS_UNKNOWN","error_code":"SBE_CONTROLLER"})"},
    {"ScheduleName", "SCPTscheduleName", "576F636865 00", R"({"name":"Woche"})"},
};

// All alternatives of a union are shown; those whose limits the bytes exceed are not given back.
const std::vector<ValueRow> kUnions = {
    // 1010 0101, 1100 0011, 1000 0001 in both alternatives: 1 0 1 0 0101, 195, 129 and
    // 1 0 1 0 0 1 0 1, 195, 1000000 1
    {"Maintenance", "SNVT_dev_maint", "01 A5C381",
     R"({"device_select":"DV_VALVE_POS","dev_type":{"pump_ctrl":{"service_required":1,)"
     R"("bearings_change":0,"bearings_lubricate":1,"shaftseal_change":0,"reserved1_4_7":5,)"
     R"("reserved2_0_7":195,"reserved3_0_7":129},"valve_pos":{"motor_maint":1,)"
     R"("packing_change":0,"electronics_check":1,"positioning_check":0,"lubrication_check":0,)"
     R"("return_check":1,"battery_check":0,"reserved1_7":1,"reserved2_0_7":195,)"
     R"("reserved3_0_6":64,"general_maint":1}}})"},
    // Days 87 and 300; their high bytes are month 0 and week 0, their low bytes no days of a week.
    {"TimeZoneByDayOfYear", "SNVT_time_zone", "00000E10 01 021E0F 0057 030000 012C",
     R"({"second_time_offset":3600,"type_of_description":"CAL_JUL","hour_of_start_DST":2,)"
     R"("minute_of_start_DST":30,"second_of_start_DST":15,"start_DST":{"G_day_of_start_DST":87,)"
     R"("J_day_of_start_DST":87,"M_start_DST":{"month_of_start_DST":0,"week_of_start_DST":0,)"
     R"("dateday_of_start_DST":"87"}},"hour_of_end_DST":3,"minute_of_end_DST":0,)"
     R"("second_of_end_DST":0,"end_DST":{"G_day_of_end_DST":300,"J_day_of_end_DST":300,)"
     R"("M_end_DST":{"month_of_end_DST":0,"week_of_end_DST":0,"dateday_of_end_DST":"44"}}})",
     R"({"second_time_offset":3600,"type_of_description":"CAL_JUL","hour_of_start_DST":2,)"
     R"("minute_of_start_DST":30,"second_of_start_DST":15,"start_DST":{"G_day_of_start_DST":87,)"
     R"("J_day_of_start_DST":87},"hour_of_end_DST":3,"minute_of_end_DST":0,)"
     R"("second_of_end_DST":0,"end_DST":{"J_day_of_end_DST":300}})"},
    // 0011 101 0 and 1010 101 0: the fifth weeks of March and October; 0x3A00 = 14848 and
    // 0xAA00 = 43520; 0xFFFFB9B0 = -18000
    {"TimeZoneByWeek", "SNVT_time_zone", "FFFFB9B0 02 020000 3A00 03003B AA06",
     R"({"second_time_offset":-18000,"type_of_description":"CAL_MEU","hour_of_start_DST":2,)"
     R"("minute_of_start_DST":0,"second_of_start_DST":0,"start_DST":)"
     R"({"G_day_of_start_DST":14848,"J_day_of_start_DST":14848,"M_start_DST":)"
     R"({"month_of_start_DST":3,"week_of_start_DST":5,"dateday_of_start_DST":"DAY_SUN"}},)"
     R"("hour_of_end_DST":3,"minute_of_end_DST":0,"second_of_end_DST":59,"end_DST":)"
     R"({"G_day_of_end_DST":43526,"J_day_of_end_DST":43526,"M_end_DST":)"
     R"({"month_of_end_DST":10,"week_of_end_DST":5,"dateday_of_end_DST":"DAY_SAT"}}})",
     R"({"second_time_offset":-18000,"type_of_description":"CAL_MEU","hour_of_start_DST":2,)"
     R"("minute_of_start_DST":0,"second_of_start_DST":0,"start_DST":{"M_start_DST":)"
     R"({"month_of_start_DST":3,"week_of_start_DST":5,"dateday_of_start_DST":"DAY_SUN"}},)"
     R"("hour_of_end_DST":3,"minute_of_end_DST":0,"second_of_end_DST":59,"end_DST":)"
     R"({"M_end_DST":{"month_of_end_DST":10,"week_of_end_DST":5,)"
     R"("dateday_of_end_DST":"DAY_SAT"}}})"},
};

// --- Properties laid out like a network variable type ---

// SNVT_elapsed_tm: day, hour, minute, second, millisecond
const std::vector<ValueRow> kDurations = {
    {"FeedbackDelay", "SCPTactFbDly", "0000 01 02 03 0004",
     R"({"day":0,"hour":1,"minute":2,"second":3,"millisecond":4})"},
    {"AlarmClearTime1", "SCPTalrmClrT1", "FFFF 17 3B 3B 03E7",
     R"({"day":65535,"hour":23,"minute":59,"second":59,"millisecond":999})"},
    {"AlarmClearTime2", "SCPTalrmClrT2", "0102 03 04 05 0006",
     R"({"day":258,"hour":3,"minute":4,"second":5,"millisecond":6})"},
    {"AlarmInhibitTime", "SCPTalrmIhbT", "0000 00 0A 00 0000",
     R"({"day":0,"hour":0,"minute":10,"second":0,"millisecond":0})"},
    {"AlarmSetTime1", "SCPTalrmSetT1", "0000 00 00 1E 01F4",
     R"({"day":0,"hour":0,"minute":0,"second":30,"millisecond":500})"},
    {"AlarmSetTime2", "SCPTalrmSetT2", "016D 00 00 00 0000",  // 256 + 109
     R"({"day":365,"hour":0,"minute":0,"second":0,"millisecond":0})"},
    {"InputFeedbackDelay", "SCPTinFbDly", "0000 00 00 05 0001",
     R"({"day":0,"hour":0,"minute":0,"second":5,"millisecond":1})"},
    {"MaxSendInterval", "SCPTmaxSndT", "0000 00 01 00 0000",
     R"({"day":0,"hour":0,"minute":1,"second":0,"millisecond":0})"},
    {"MinSendInterval", "SCPTminSndT", "0000 00 00 00 0064",
     R"({"day":0,"hour":0,"minute":0,"second":0,"millisecond":100})"},
    {"OffDelay", "SCPToffDely", "0001 16 00 02 0000",
     R"({"day":1,"hour":22,"minute":0,"second":2,"millisecond":0})"},
};

const std::vector<ValueRow> kPropertyNumbers = {
    {"ManualOverrideTime", "SCPTmanOvrTime", "00F0", "240"},
    {"HumiditySetpoint", "SCPThumSetpt", "2710", "50.0"},  // 10000 * 5 / 1000
    {"CarbonDioxideLimit", "SCPTlimitCO2", "03E8", "1000"},
    {"MinAngleDelta", "SCPTminDeltaAngl", "0032", "1.0"},  // 50 * 2 / 100
    {"DriveTime", "SCPTdriveTime", "05DC", "150.0"},       // 1500 / 10
    {"DuctArea", "SCPTductArea", "02EE", "0.15"},          // 750 * 2 / 10000
    {"MinFlowDelta", "SCPTminDeltaFlow", "0005", "5"},
    {"MaxSendTime", "SCPTmaxSendTime", "0BB8", "300.0"},  // 3000 / 10
    {"MaxSetpoint", "SCPTmaxSetpoint", "3A98", "75.0"},   // 15000 * 5 / 1000
    {"MaxFlow", "SCPTmaxFlow", "0708", "1800"},           // 7 * 256 + 8
    {"MinSendTime", "SCPTminSendTime", "0032", "5.0"},
    {"MinSetpoint", "SCPTminSetpoint", "EC78", "-25.0"},  // -5000 * 5 / 1000
    {"MinFlow", "SCPTminFlow", "0064", "100"},
    {"MinFlowOfHeating", "SCPTminFlowHeat", "0096", "150"},
    {"MinFlowInStandby", "SCPTminFlowStby", "0033", "51"},
    {"NominalAirFlow", "SCPTnomAirFlow", "0640", "1600"},  // 6 * 256 + 64
    {"NominalAngle", "SCPTnomAngle", "1194", "90.0"},      // 4500 * 2 / 100
    {"MinTemperatureDelta", "SCPTminDeltaTemp", "0032", "0.5"},
    {"TemperatureOffset", "SCPToffsetTemp", "FF38", "-2.0"},  // -200 / 100
    {"PowerUpDelay", "SCPTpwrUpDelay", "0096", "15.0"},
    {"CoolingSetpoint", "SCPTcoolSetpoint", "09C4", "25.0"},       // 9 * 256 + 196 = 2500
    {"CoolingLowerSetpoint", "SCPTcoolLowerSP", "0834", "21.0"},   // 8 * 256 + 52 = 2100
    {"CoolingUpperSetpoint", "SCPTcoolUpperSP", "0BB8", "30.0"},   // 11 * 256 + 184 = 3000
    {"HeatingSetpoint", "SCPTheatSetpoint", "07D0", "20.0"},       // 7 * 256 + 208 = 2000
    {"HeatingLowerSetpoint", "SCPTheatLowerSP", "05DC", "15.0"},   // 5 * 256 + 220 = 1500
    {"HeatingUpperSetpoint", "SCPTheatUpperSP", "0A28", "26.0"},   // 10 * 256 + 40 = 2600
    {"ChillerCapacityLimit", "SCPTlimitChlrCap", "3E80", "80.0"},  // 16000 * 5 / 1000
    {"LuxSetpoint", "SCPTluxSetpoint", "01F4", "500"},
    {"Step", "SCPTstep", "0A", "5.0"},                                // 10 * 5 / 10
    {"OnOffHysteresis", "SCPTonOffHysteresis", "15", "10.5"},         // 21 * 5 / 10
    {"OffDelayOfAConstantLight", "SCPTclOffDelay", "1770", "600.0"},  // 6000 / 10
    {"OnDelayOfAConstantLight", "SCPTclOnDelay", "000F", "1.5"},
    {"FieldCalibration", "SCPTfieldCalib", "0320", "800"},
    {"HoldTime", "SCPTholdTime", "2328", "900.0"},  // 9000 / 10
    {"StepValue", "SCPTstepValue", "03", "1.5"},
    {"MaxOutput", "SCPTmaxOut", "C7", "99.5"},  // 199 * 5 / 10
    {"FadeTime", "SCPTfadeTime", "0014", "2.0"},
    {"DelayTime", "SCPTdelayTime", "0001", "0.1"},
    {"UpdateRate", "SCPTupdateRate", "0065", "10.1"},
    {"ModeHeartbeat", "SCPTmodeHrtBt", "FFFE", "6553.4"},
    {"ConfigurationSource", "SCPTnwrkCnfg", "01", R"("CFG_EXTERNAL")"},
    {"OverrideBehaviour", "SCPTovrBehave", "01", R"("OV_SPECIFIED")"},
    {"HvacType", "SCPThvacType", "09", R"("HVT_SELF_CONT")"},
};

const std::vector<ValueRow> kPropertyStructures = {
    // 10, 20, 30, 40, 50 and 60 are 1.25 * 2^3, 1.25 * 2^4, 1.875 * 2^4, 1.25 * 2^5, 1.5625 * 2^5
    // and 1.875 * 2^5; 01 00 01 00, 01 00 01
    {"TranslationOfX", "SCPTtrnsTblX",
     "00000000 41200000 41A00000 41F00000 42200000 42480000 42700000 4444",
     R"({"point":[0.0,10.0,20.0,30.0,40.0,50.0,60.0],"interp_pts_0_to_1":1,)"
     R"("interp_pts_1_to_2":0,"interp_pts_2_to_3":1,"interp_pts_3_to_4":0,)"
     R"("interp_pts_4_to_5":1,"interp_pts_5_to_6":0,"interp_pts_6_to_0":1})"},
    // 00 01 00 01, 00 01 00
    {"TranslationOfY", "SCPTtrnsTblY",
     "BF800000 BF000000 00000000 3F000000 3F800000 3FC00000 40000000 1110",
     R"({"point":[-1.0,-0.5,0.0,0.5,1.0,1.5,2.0],"interp_pts_0_to_1":0,"interp_pts_1_to_2":1,)"
     R"("interp_pts_2_to_3":0,"interp_pts_3_to_4":1,"interp_pts_4_to_5":0,)"
     R"("interp_pts_5_to_6":1,"interp_pts_6_to_0":0})"},
    {"ActuatorType", "SCPTactuatorType", "4D562D3234 00", R"({"ascii":"MV-24"})"},
    {"MakersType", "SCPToemType", "4FE9 00", R"({"ascii":"Oé"})"},
    {"SerialNumber", "SCPTserialNumber", "30303432", R"({"ascii":"0042"})"},
    {"Direction", "SCPTdirection", "C003", jsonOfBits(16, {0, 1, 14, 15})},
    {"DayAndNight", "SCPTdayNightCntrl", "0180", jsonOfBits(16, {7, 8})},
    {"Setpoints", "SCPTsetPnts", "092E 0992 0AF0 0802 06A4 05DC",  // 2350 2450 2800 2050 1700 1500
     R"({"occupied_cool":23.5,"standby_cool":24.5,"unoccupied_cool":28.0,"occupied_heat":20.5,)"
     R"("standby_heat":17.0,"unoccupied_heat":15.0})"},
    {"DefaultBehaviour", "SCPTdefltBehave", "6401", R"({"value":50.0,"state":1})"},
    {"ScrollSpeed", "SCPTscrollSpeed", "0900", R"({"value":4.5,"state":0})"},  // 9 * 5 / 10
    {"SummerTime", "SCPTsummerTime", "07E8 03 1F 02 01 00",
     R"({"year":2024,"month":3,"day":31,"hour":2,"minute":1,"second":0})"},
    {"WinterTime", "SCPTwinterTime", "07E8 0A 1B 03 00 0F",
     R"({"year":2024,"month":10,"day":27,"hour":3,"minute":0,"second":15})"},
    {"NetworkVariableType", "SCPTnvType",
     "8000010128000A04 06 0001 09 1F 0005 FFFC F54C",  // 0xF54C = 65536 - 2740
     R"({"type_program_ID":[128,0,1,1,40,0,10,4],"type_scope":6,"type_index":1,)"
     R"("type_category":"NVT_CAT_STRUCT","type_length":31,"scaling_factor_a":5,)"
     R"("scaling_factor_b":-4,"scaling_factor_c":-2740})"},
};

// --- Types in another unit ---

const std::vector<ValueRow> kShown = {
    {"EnthalpyMetric", "SNVT_enthalpy-SI", "1388", "50.0"},   // 5000 / 100
    {"EnthalpyBtu", "SNVT_enthalpy-US", "1388", "29.16615"},  // 50 * 0.429923 + 7.67
    {"EnthalpyBtuOfZero", "SNVT_enthalpy-US", "0000", "7.67"},
    {"EnthalpyDifference", "SNVT_enthalpy-US_diff", "EC78", "-21.49615"},  // -50 * 0.429923
    {"OverrideOfFlow", "SNVT_hvac_overid-US", "02 D8F0 0064",              // 100 * 2.1189
     R"({"state":"HVO_FLOW_VALUE","percent":-50.0,"flow":211.89})"},
    {"OverrideOfFlowInAnotherForm", "SNVT_hvac_overid-US_LO", "02 EC78 0001",  // -5000 * 5 / 1000
     R"({"state":"HVO_FLOW_VALUE","percent":-25.0,"flow":2.1189})"},
    {"HysteresisMetric", "SCPTtemperatureHysteresis-SI", "FFFF", "-0.01"},
    {"HysteresisFahrenheit", "SCPTtemperatureHysteresis-US", "0032", "0.9"},  // 0.5 * 1.8
};

INSTANTIATE_TEST_SUITE_P(Numbers, StandardTypeValue, testing::ValuesIn(kNumbers), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Floats, StandardTypeValue, testing::ValuesIn(kFloats), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Enumerations, StandardTypeValue, testing::ValuesIn(kEnumerations),
                         nameOfRow);
INSTANTIATE_TEST_SUITE_P(Structures, StandardTypeValue, testing::ValuesIn(kStructures), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Unions, StandardTypeValue, testing::ValuesIn(kUnions), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Durations, StandardTypeValue, testing::ValuesIn(kDurations), nameOfRow);
INSTANTIATE_TEST_SUITE_P(PropertyNumbers, StandardTypeValue, testing::ValuesIn(kPropertyNumbers),
                         nameOfRow);
INSTANTIATE_TEST_SUITE_P(PropertyStructures, StandardTypeValue,
                         testing::ValuesIn(kPropertyStructures), nameOfRow);
INSTANTIATE_TEST_SUITE_P(Shown, StandardTypeValue, testing::ValuesIn(kShown), nameOfRow);

// --- All rows together ---

TEST(StandardTypeRows, AreAboutEveryType) {
  std::set<std::string> covered = test::typesOfValueTable();
  for (const auto* rows : {&kNumbers, &kFloats, &kEnumerations, &kStructures, &kUnions, &kDurations,
                           &kPropertyNumbers, &kPropertyStructures, &kShown}) {
    for (const ValueRow& row : *rows) covered.insert(row.type);
  }

  unsigned typeCount = 0;
  for (const VarType* type : test::findStandardLayouts(standardTypes())) {
    const std::string name = type->getTypeId().toLonFormatId();
    EXPECT_EQ(covered.count(name), 1u) << name << " has no row";
    typeCount += static_cast<unsigned>(covered.count(name));
  }
  EXPECT_GE(typeCount, 150u);
}

}  // namespace
}  // namespace zavri::korvat
