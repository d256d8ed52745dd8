#pragma once

// Everything that the pages of the 10-30 kVA range show or set, in the order in which they show it. Texts are
// source texts in the context of vek5_10_30k_View; odd spellings belong to the product.
namespace catalogue {

/// One choice of an option parameter. Its raw value is the number without its fraction.
struct Option
{
    const char* text;
    float value;
    bool isTranslated = true;
};

/// The choices of an option parameter, in the order in which they are added; none for other parameters.
struct Options
{
    const Option* first = nullptr;
    int count = 0;
};

template <int size>
constexpr Options options(const Option (&list)[size])
{
    return {list, size};
}

/// One value: type is a display type code, pointCount the length of a text in points (0 unless a text),
/// minRaw and maxRaw its range in the unit's own integers (none when both are 0).
struct Row
{
    const char* label;
    int pointId;
    int type;
    int pointCount;
    const char* unit;
    float ratio; ///< shown value for one raw unit; 0 where nothing is ever scaled
    int minRaw;
    int maxRaw;
    Options choices = {};
};

// clang-format off
constexpr Option workMode[] = {
    {"No power supply", 0}, {"Mains power supply", 1}, {"Battery power supply", 2},
    {"Conbined power supply", 3}, {"Bypass power supply", 4}
};
constexpr Option modelIdentification[] = {{"Single-Single", 0}, {"Three-Single", 1}, {"Three-Three", 2}};
constexpr Option batteryStatus[] = {
    {"Disconnect", 0}, {"Standby", 1}, {"Const current equalized charge", 2},
    {"Const voltage float charge", 3}, {"Discharge", 4}, {"Const voltage equalized charge", 5}
};
constexpr Option batteryTestStatus[] = {{"None", 0}, {"Testing", 1}, {"Maintenance", 2}};
constexpr Option rectifierStatus[] = {{"Off", 0}, {"Soft start", 1}, {"PFC mode", 2}, {"Battery mode", 3}};
constexpr Option inverterStatus[] = {{"Off", 0}, {"Soft start", 1}, {"Normal run", 2}};
constexpr Option outputLoadOnState[] = {
    {"None", 0}, {"Load on bypass", 1}, {"Load on inverter", 2}, {"Load on other", 3}
};
constexpr Option bypassStatus[] = {{"No bypass", 0}, {"Bypass normal", 1}};
constexpr Option systemWorkMode[] = {
    {"Stand alone", 1}, {"Parallel operation", 2}, {"ECO", 4}, {"Parallels ECO", 6}, {"Self ageing", 8}
};
constexpr Option disableEnable[] = {{"Disable", 0}, {"Enable", 1}};
// The reverse of the other switches: deliberate, this is how units store these two.
constexpr Option enableDisable[] = {{"Enable", 0}, {"Disable", 1}};
constexpr Option connection[] = {{"Unconnect", 0}, {"Connect", 1}};
constexpr Option outputContacts[] = {
    {"Not used", 0}, {"Mains abnormal", 1}, {"Low battery voltage", 2}, {"Bypass power supply", 3},
    {"Inverter power supply", 4}, {"Battery mode", 5}, {"Comprehensive warning", 6}, {"Output overload", 7},
    {"Battery trip", 8}
};
constexpr Option firstInputContact[] = {
    {"Not used", 0}, {"Oil engine mode", 1}, {"BCB access", 2}, {"Cut inverter", 3}, {"BCB status", 4},
    {"Cut bypass", 5}, {"Clear fault", 6}, {"Discharge undervoltage", 7}, {"Overcharge", 8},
    {"EPO emergency shutdown", 9}
};
constexpr Option inputContacts[] = {
    {"Not used", 0}, {"Oil engine mode", 1}, {"BCB access", 2}, {"Cut inverter", 3}, {"BCB status", 4},
    {"Cut bypass", 5}, {"Clear fault", 6}, {"Discharge undervoltage", 7}, {"Overcharge", 8}
};
constexpr Option derateOutputPf[] = {{"1", 0}, {"0.9", 1}};
constexpr Option batteryType[] = {{"VRLA battery", 0}, {"Lithium battery", 1}};
// The last two go untranslated: deliberate, hosts' catalogues have the first two alone.
constexpr Option bypassVoltageUpLimit[] = {{"+15", 0}, {"+10", 1}, {"+20", 2, false}, {"+25", 3, false}};
constexpr Option bypassVoltageDownLimit[] = {{"-20", 0}, {"-10", 1}, {"-15", 2}, {"-30", 3}, {"-40", 4}};
constexpr Option bypassFrequencyRange[] = {{"+-5", 0}, {"+-1", 1}, {"+-3", 2}, {"Unlimited", 3}};
constexpr Option selfAgeingCurrentPercent[] = {
    {"30", 0}, {"40", 1}, {"50", 2}, {"60", 3}, {"70", 4}, {"80", 5}, {"90", 6}, {"100", 7}
};
// The numbers are the currents; as raw values they are cut, so that "0.5" stands for 0.
constexpr Option chargeCurrentLimit[] = {
    {"0.5", 0.5F}, {"1.0", 1}, {"2.0", 2}, {"3.0", 3}, {"4.0", 4}, {"5.0", 5}, {"6.0", 6}, {"7.0", 7},
    {"8.0", 8}, {"9.0", 9}, {"10.0", 10}, {"11.0", 11}, {"12.0", 12}
};
constexpr Option outputPhases[] = {{"Three-Three", 0}, {"Three-Single", 1}};
constexpr Option ratedVoltages[] = {
    {"100", 100}, {"110", 110}, {"120", 120}, {"125", 125}, {"200", 200}, {"208", 208}, {"220", 220},
    {"230", 230}, {"240", 240}
};
constexpr Option ratedFrequencies[] = {{"50", 50}, {"60", 60}};
constexpr Option comAProtocols[] = {{"Modbus Rtu", 1}, {"RQ", 2}};
constexpr Option comBProtocols[] = {{"Modbus Rtu", 1}, {"Modbus Bms", 2}};
// "9600" stands here twice and the later one wins: deliberate, raw value 0 has no text and shows empty.
constexpr Option baudRates[] = {{"9600", 0}, {"2400", 1}, {"4800", 2}, {"9600", 3}, {"19200", 4}};

// Label, point, type, points, unit, ratio, least, greatest, choices.

// "DEVICE" panel.
constexpr Row deviceData[] = {
    {"Work mode:",                4250, 11,  0, "",    1, 0, 0, options(workMode)},
    {"Model identification:",     4248, 11,  0, "",    0, 0, 0, options(modelIdentification)},
    {"Last discharge time:",      4268,  9,  6, "",    0, 0, 0},
    {"Battery warranty days:",    4274,  0,  0, "Day", 0, 0, 0},
    {"UPS warranty days:",        4275,  0,  0, "Day", 0, 0, 0},
    {"Modbus decode version:",    4097,  0,  0, "",    0, 0, 0},
    {"Device name:",              4080,  9, 16, "",    0, 0, 0},
    {"Device type:",              4016,  9, 16, "",    0, 0, 0},
    {"Device manufacturer:",      4000,  9, 16, "",    0, 0, 0},
    {"Program/Firmware version:", 4098,  0,  0, "",    0, 0, 0},
    {"Serial numbers:",           4064,  9, 16, "",    0, 0, 0},
};

// "BATTERY" panel.
constexpr Row batteryData[] = {
    {"Battery positive Voltage:", 4103,  4, 0, "V",   0, 0,     0},
    {"Battery negative Voltage:", 4104,  4, 0, "V",   0, 0,     0},
    {"Battery positive current:", 4105,  4, 0, "A",   0, 0,     0},
    {"Battery negative current:", 4106,  4, 0, "A",   0, 0,     0},
    {"Battery temperature:",      4107,  4, 0, "℃",   0, 0,     0},
    {"Battery Number:",           4108,  0, 0, "",    0, 0,     0},
    {"Battery capacity:",         4109,  4, 0, "AH",  0, 0,     0},
    {"Rated capacity:",           4243,  4, 0, "kVA", 0, 0,     0},
    {"Remain discharge time:",    4110,  0, 0, "Min", 0, 0, 10000},
    {"Battery remain capacity:",  4111,  0, 0, "%",   0, 0,   100},
    {"Battery status:",           4101, 11, 0, "",    0, 0,     0, options(batteryStatus)},
    {"Battery test status:",      4259, 11, 0, "",    0, 0,     0, options(batteryTestStatus)},
};

// "REC/INV" panel.
constexpr Row recInvData[] = {
    {"Rectifier temperature:",      4241,  4, 0, "℃", 0, 0, 0},
    {"Rectifier status:",           4239, 11, 0, "",  0, 0, 0, options(rectifierStatus)},
    {"Rectifier software version:", 4251,  9, 4, "",  0, 0, 0},
    {"Inverter temperature:",       4242,  4, 0, "℃", 0, 0, 0},
    {"Inverter status:",            4240, 11, 0, "",  0, 0, 0, options(inverterStatus)},
    {"Inverter software version:",  4255,  9, 4, "",  0, 0, 0},
};

// "INPUT" panel.
constexpr Row inputData[] = {
    {"Input voltage:",         4133, 5, 0, "V",  0, 0, 0},
    {"Input current:",         4136, 5, 0, "A",  0, 0, 0},
    {"Input frequency:",       4139, 5, 0, "Hz", 0, 0, 0},
    {"Input PF:",              4142, 5, 0, "",   0, 0, 0},
    {"Rated input voltage:",   4244, 0, 0, "V",  0, 0, 0},
    {"Rated input frequency:", 4245, 0, 0, "Hz", 0, 0, 0},
};

// "OUTPUT" panel.
constexpr Row outputData[] = {
    {"Output voltage:",         4163,  5, 0, "V",   0, 0, 0},
    {"Output current:",         4166,  5, 0, "A",   0, 0, 0},
    {"Output frequency:",       4169,  5, 0, "Hz",  0, 0, 0},
    {"Output PF:",              4172,  5, 0, "",    0, 0, 0},
    {"Output apparent power:",  4175,  5, 0, "kVA", 0, 0, 0},
    {"Output active power:",    4178,  5, 0, "kW",  0, 0, 0},
    {"Output reactive power:",  4181,  5, 0, "kVA", 0, 0, 0},
    {"Output load percentage:", 4184,  5, 0, "%",   0, 0, 0},
    {"Rated output voltage:",   4246,  0, 0, "V",   0, 0, 0},
    {"Rated output frequency:", 4247,  0, 0, "Hz",  0, 0, 0},
    {"Output load on state:",   4161, 11, 0, "",    0, 0, 0, options(outputLoadOnState)},
};

// "BYPASS" panel.
constexpr Row bypassData[] = {
    {"Bypass voltage:",   4192,  5, 0, "V",  0, 0, 0},
    {"Bypass current:",   4195,  5, 0, "A",  0, 0, 0},
    {"Bypass frequency:", 4198,  5, 0, "Hz", 0, 0, 0},
    {"Bypass PF:",        4201,  5, 0, "",   0, 0, 0},
    {"Bypass status:",    4190, 11, 0, "",   0, 0, 0, options(bypassStatus)},
};

// "Basic parameters" table.
constexpr Row basicConfig[] = {
    {"System work mode:",               3000, 11, 0, "", 1, 0, 0, options(systemWorkMode)},
    {"Enable switch inverter:",         3010, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Forbid bypass:",                  3011, 11, 0, "", 1, 0, 0, options(enableDisable)},
    {"EPO function enable:",            3012, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Allow reverse input:",            3013, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Output with transformer:",        3014, 11, 0, "", 1, 0, 0, options(connection)},
    {"weak grid input:",                3015, 11, 0, "", 1, 0, 0, options(connection)},
    {"Output dry contact 1:",           3031, 11, 0, "", 1, 0, 0, options(outputContacts)},
    {"Output dry contact 2:",           3032, 11, 0, "", 1, 0, 0, options(outputContacts)},
    {"Output dry contact 3:",           3033, 11, 0, "", 1, 0, 0, options(outputContacts)},
    {"Input dry contact 1:",            3034, 11, 0, "", 1, 0, 0, options(firstInputContact)},
    {"Input dry contact 2:",            3035, 11, 0, "", 1, 0, 0, options(inputContacts)},
    {"Input dry contact 3:",            3036, 11, 0, "", 1, 0, 0, options(inputContacts)},
    {"Derate rate enable:",             3043, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Rated frequency self-adaption:",  3047, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Restart after bus over voltage:", 3048, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Fan fault allow buzzer on:",      3049, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Lacking phase work:",             3050, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Frequency conversion mode:",      3051, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Derate output PF:",               3052, 11, 0, "", 1, 0, 0, options(derateOutputPf)},
    {"Lcd Display cap:",                3053, 11, 0, "", 1, 0, 0, options(disableEnable)},
    {"Auto power on:",                  3054, 11, 0, "", 1, 0, 0, options(enableDisable)},
};

// "Battery parameters" table.
constexpr Row batteryConfig[] = {
    {"Battery numbers:",                 3017,  0, 0, "",         1,  16,   180},
    {"Battery AH:",                      3018,  0, 0, "AH",       1,   1, 30000},
    {"Battery type:",                    3024, 11, 0, "",         1,   0,     0, options(batteryType)},
    {"Cell float voltage:",              3019,  6, 0, "V",    0.01F, 210,   365},
    {"Cell boost voltage:",              3020,  6, 0, "V",    0.01F, 210,   365},
    {"Cell Eod voltage for 0.6c:",       3021,  6, 0, "V",    0.01F, 160,   300},
    {"Cell Eod voltage for 0.15c:",      3022,  6, 0, "V",    0.01F, 160,   300},
    {"Boost cycle:",                     3026,  0, 0, "Hour",     1,   1,  3000},
    {"Battery auto maintenance cycle:",  3027,  0, 0, "Hour",     1, 720, 30000},
    {"Battery maintenance cycle:",       3029,  0, 0, "Day",      1,   0,  3000},
    {"Battery voltage low coefficient:", 3030,  6, 0, "",     0.01F, 105,   125},
    {"Battery auto equalized charge:",   3045, 11, 0, "",         1,   0,     0, options(disableEnable)},
    {"Battery auto maintenance:",        3046, 11, 0, "",         1,   0,     0, options(disableEnable)},
};

// "Adjusting parameters" table.
constexpr Row adjustConfig[] = {
    {"Output voltage adjust:",                           3003,  0, 0, "V",        1, 0,  0},
    {"Frequency track limit:",                           3004,  4, 0, "Hz",    0.1F, 5, 50},
    {"Transformer coil turns ratio:",                    3016,  4, 0, "",     0.01F, 0,  0},
    {"LCD backlight lighten time:",                      3028,  0, 0, "Min",      1, 1, 30},
    {"Frequency slew rate:",                             3073,  0, 0, "Hz",    0.1F, 5, 50},
    {"Bypass voltage up limit:",                         3005, 11, 0, "%",        1, 0,  0, options(bypassVoltageUpLimit)},
    {"Bypass voltage down limit:",                       3006, 11, 0, "%",        1, 0,  0, options(bypassVoltageDownLimit)},
    {"Bypass frequency range:",                          3007, 11, 0, "Hz",       1, 0,  0, options(bypassFrequencyRange)},
    {"Self ageing current percent:",                     3008, 11, 0, "%",        1, 0,  0, options(selfAgeingCurrentPercent)},
    {"Charge current limit:",                            3023, 11, 0, "A",    0.01F, 0,  0, options(chargeCurrentLimit)},
    {"Boost time limit:",                                3025,  0, 0, "Hour",     1, 1, 48},
    {"Inverter voltage phase A rectification:",          3055,  4, 0, "V",     0.1F, 0,  0},
    {"Inverter voltage phase B rectification:",          3056,  4, 0, "V",     0.1F, 0,  0},
    {"Inverter voltage phase C rectification:",          3057,  4, 0, "V",     0.1F, 0,  0},
    {"Bypass voltage A rectification:",                  3058,  4, 0, "V",     0.1F, 0,  0},
    {"Bypass voltage B rectification:",                  3059,  4, 0, "V",     0.1F, 0,  0},
    {"Bypass voltage C rectification:",                  3060,  4, 0, "V",     0.1F, 0,  0},
    {"Inverter DC voltage A rectification:",             3061,  6, 0, "V",    0.01F, 0,  0},
    {"Inverter DC voltage B rectification:",             3062,  6, 0, "V",    0.01F, 0,  0},
    {"Inverter DC voltage C rectification:",             3063,  6, 0, "V",    0.01F, 0,  0},
    {"Input Phase A voltage rectification:",             3064,  4, 0, "V",     0.1F, 0,  0},
    {"Input Phase B voltage rectification:",             3065,  4, 0, "V",     0.1F, 0,  0},
    {"Input Phase C voltage rectification:",             3066,  4, 0, "V",     0.1F, 0,  0},
    {"Battery voltage positive rectification:",          3067,  4, 0, "V",     0.1F, 0,  0},
    {"Battery voltage negative rectification:",          3068,  4, 0, "V",     0.1F, 0,  0},
    {"Input with transformer voltage rectification 1:",  3069,  4, 0, "V",     0.1F, 0,  0},
    {"Input with transformer voltage rectification 2:",  3070,  4, 0, "V",     0.1F, 0,  0},
    {"Output with transformer voltage rectification 1:", 3071,  4, 0, "V",     0.1F, 0,  0},
    {"Output with transformer voltage rectification 2:", 3072,  4, 0, "V",     0.1F, 0,  0},
};

// "UPS information" table.
// "Rated input frequency:" carries "V": deliberate, operators know this table so.
constexpr Row devInfoConfig[] = {
    {"Parallel device number:",              3001,  0,  0, "",    1, 0,  10},
    {"Device address:",                      3002,  0,  0, "",    1, 0,  10},
    {"Output three phase/one phase select:", 3044, 11,  0, "",    1, 0,   0, options(outputPhases)},
    {"Rated power:",                         3037,  0,  0, "kVA", 1, 0,   0},
    {"License power:",                       3038,  0,  0, "kVA", 1, 0,   0},
    {"Rated input voltage:",                 3039, 11,  0, "V",   1, 0,   0, options(ratedVoltages)},
    {"Rated input frequency:",               3040, 11,  0, "V",   1, 0,   0, options(ratedFrequencies)},
    {"Rated output voltage:",                3041, 11,  0, "V",   1, 0,   0, options(ratedVoltages)},
    {"Rated output frequency:",              3042, 11,  0, "Hz",  1, 0,   0, options(ratedFrequencies)},
    {"Communication address:",               3074,  0,  0, "",    1, 1, 255},
    {"COM_A protocol set:",                  3075, 11,  0, "",    1, 0,   0, options(comAProtocols)},
    {"COM_B protocol set:",                  3076, 11,  0, "",    1, 0,   0, options(comBProtocols)},
    {"Device type:",                         3077,  9, 10, "",    1, 0,   0},
    {"Company name:",                        3087,  9, 16, "",    1, 0,   0},
    {"System time:",                         3103,  9,  6, "",    1, 0,   0},
    {"Serial Numbers:",                      3109,  9, 16, "",    1, 0,   0},
    {"Company phone:",                       3150,  9, 14, "",    1, 0,   0},
    {"COM_A  baud rate set:",                3125, 11,  0, "",    1, 0,   0, options(baudRates)},
    {"COM_B  baud rate set:",                3126, 11,  0, "",    1, 0,   0, options(baudRates)},
};
// clang-format on

} // namespace catalogue
