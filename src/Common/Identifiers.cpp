#include <Faultkeeper/Identifiers.h>

#include "Common/Numbers.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace Faultkeeper
{

namespace
{
// A sub-module's value is (row + 1) << 8. Append only: configuration files in the field use these spellings.
constexpr const char* kSubModuleNames[] = {
    "Accelerometers",
    "Battery",
    "Bus",
    "CAL",
    "CAN",
    "CDMA",
    "Communications",
    "Controller",
    "DMI",
    "Engage",
    "Field Offset",
    "GPS",
    "GSM",
    "GUI",
    "GyroAccel",
    "Gyros",
    "Implement Offset",
    "Implement Width",
    "IMU",
    "Tessel",
    "L1 Antenna",
    "L1 L2 Antenna",
    "Line",
    "Log Server",
    "Magnetometer",
    "Maxstream",
    "Pelk",
    "Vantor 2",
    "Corvex",
    "Navigation",
    "None",
    "Operation",
    "Position",
    "PPPD Server",
    "Sensitivity",
    "Service",
    "SPI",
    "Steering",
    "Sysmon",
    "Ublox",
    "Waypoints",
    "X Accel",
    "X Gyro",
    "Y Accel",
    "Y Gyro",
    "Z Accel",
    "Z Gyro",
    "Ostrel",
    "HSDPA",
    "Temperature Calibration",
    "Nudge",
    "NetworkRTK",
    "SecondaryGPS",
    "Treatments",
};

// A problem's value is row + 1; null rows are not assigned. Append only.
constexpr const char* kProblemNames[] = {
    "A Not Set",
    "Antenna Separation",
    "Authentication Failed",
    "B Not Set",
    "Calibration",
    "Cannot Open",
    "Checksum",
    "Commands Failing",
    "Communications",
    "Connection",
    "Crash",
    "Data",
    "Disengage Fault",
    "Distance",
    "Engage Fault",
    "Framing",
    "Heading",
    "I2C Error",
    "Incorrect APN",
    "Incorrect Count",
    "Incorrect PIN",
    "Initialisation",
    "Kernel Error",
    "L1 Jammed",
    "L2 Jammed",
    "Movement Detected",
    "No Data",
    "No Network",
    "No SIM",
    "No Type",
    "Null Log Status",
    "Null Message",
    "Orbit Download",
    "Orientation",
    "PIN missing",
    "Port Error",
    "Position Calculation",
    "Power",
    "PPPD Crash",
    "Processing Failure",
    "Provisioning",
    "Reverse",
    "Screenshot Failed",
    "Settings",
    "Speed",
    "Steering",
    "Temperature",
    "Terminal Crash",
    "Two Bases",
    "Unable to Set A",
    "Unable to Set B",
    "Unknown Crash",
    "Unknown Error",
    "Unknown Key",
    "Unknown Type",
    "Usable Satellites",
    "Voltage",
    "Not Set",
    nullptr,
    "Activity Confirmation",
    "Calibration Lost",
    "No Steering Settings",
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    "Steering Was Overriden",
    "Attention Required",
    "Direction Mismatch",
    "Steering WAS Data",
    "Unable To Resolve Host",
    "Heading Not Set",
    nullptr,
    "Invalid Attached Device ID",
    "Lag Exceeded",
    "RSSI Low",
    "TCPIP Disconnected",
    "TCPIP Low Speed",
    "RTK Lag",
    "NTrip Low RSSI",
    "TCPIP Timeout",
    "Glide Confirmation",
    "Free Space",
    "Firmware Version",
    "Reverse Timeout",
    "Unable to Set C",
    "Radius",
    "Waypoints",
    "Nudge Limit",
    "Configuring Controller",
    "CPU Thrashing",
    "VantorRTK",
    "Beyond Treatment Range Limit",
    "Treatment Device Error",
    "ABCurve Definition",
};

// A failure mode's value is its row. Append only.
constexpr const char* kProblemTypeNames[] = {
    "DataValidButAboveOperatingRangeSevere",
    "DataValidButBelowOperatingRangeSevere",
    "DataErraticAndIntermittentlyIncorrect",
    "VoltageAboveNormalOrShortedHigh",
    "VoltageBelowNormalOrShortedLow",
    "CurrentBelowNormalOrOpenCircuit",
    "CurrentAboveNormalOrShortedGround",
    "MechanicalSystemNotRespondingOrNeedsAdjustment",
    "AbnormalFrequencyOrPulseWidthOrPeriod",
    "AbnormalUpdateRate",
    "AbnormalRateOfChange",
    "RootCauseUnknown",
    "BadIntelligentDeviceOrComponent",
    "OutOfCalibration",
    "SpecialInstructions",
    "DataValidButAboveOperatingRangeMinor",
    "DataValidButAboveOperatingRangeModerate",
    "DataValidButBelowOperatingRangeMinor",
    "DataValidButBelowOperatingRangeModerate",
    "ReceivedNetworkDataInError",
    "DataCollectionTimeout",
};

// A module's value is (row + 1) << 16. Append only.
constexpr const char* kModuleNames[] = {
    "GPS",         "CAN",     "Navigation And Control",
    "Positioning", "Service", "Base Radio",
    "Base",        "Audio",   "Cell Radio",
    "System",      "NMEA",    "NTrip",
};

// A severity's value is its row. Append only.
constexpr const char* kSeverityNames[] = {
    "Low",
    "Medium",
    "High",
    "Critical",
};

constexpr int kModuleShift = 16;
constexpr int kSubModuleShift = 8;
constexpr std::uint32_t kFirstModule = 1U << kModuleShift;
constexpr std::uint32_t kFirstSubModule = 1U << kSubModuleShift;
constexpr std::uint32_t kFirstProblem = 1U;

/// The row with this text, or -1. Exact spelling; rows that are not assigned match nothing.
template <std::size_t rows> int FindRow(const char* const (&names)[rows], const std::string& name)
{
    for (std::size_t row = 0; row < rows; ++row)
    {
        if (names[row] != nullptr && name == names[row])
            return static_cast<int>(row);
    }
    return -1;
}

/// The row's text, or "" for a row that is outside the table or not assigned. A value below the table's first
/// has wrapped round to a large row.
template <std::size_t rows> std::string RowName(const char* const (&names)[rows], std::uint32_t row)
{
    return row < rows && names[row] != nullptr ? names[row] : "";
}

template <std::size_t rows> void PrintAssigned(const char* format, const char* const (&names)[rows])
{
    for (const char* name : names)
    {
        if (name != nullptr)
            std::printf(format, name);
    }
}
} // namespace

std::string TranslateModuleId(EModuleIdentifier id)
{
    return RowName(kModuleNames, (static_cast<std::uint32_t>(id) - kFirstModule) >> kModuleShift);
}

EModuleIdentifier TranslateModuleId(const std::string& name)
{
    const int row = FindRow(kModuleNames, name);
    return row < 0 ? emiUnknown : static_cast<EModuleIdentifier>((row + 1) << kModuleShift);
}

std::string TranslateSubModuleId(ESubModuleIdentifier id)
{
    return RowName(kSubModuleNames, (static_cast<std::uint32_t>(id) - kFirstSubModule) >> kSubModuleShift);
}

ESubModuleIdentifier TranslateSubModuleId(const std::string& name)
{
    const int row = FindRow(kSubModuleNames, name);
    return row < 0 ? esmiUnknown : static_cast<ESubModuleIdentifier>((row + 1) << kSubModuleShift);
}

std::string TranslateProblemId(EProblemIdentifier id)
{
    return RowName(kProblemNames, static_cast<std::uint32_t>(id) - kFirstProblem);
}

EProblemIdentifier TranslateProblemId(const std::string& name)
{
    const int row = FindRow(kProblemNames, name);
    return row < 0 ? epiUnknown : static_cast<EProblemIdentifier>(row + 1);
}

std::string TranslateProblemType(EProblemType type)
{
    return RowName(kProblemTypeNames, static_cast<std::uint32_t>(type));
}

EProblemType TranslateProblemType(const std::string& nameOrNumber)
{
    int type = FindRow(kProblemTypeNames, nameOrNumber);
    if (type < 0 && !ReadNumber(nameOrNumber, type))
        return eptUnknown;
    return type < 0 || type >= eptUnknown ? eptUnknown : static_cast<EProblemType>(type);
}

std::string TranslateSeverity(EErrorSeverity severity)
{
    return RowName(kSeverityNames, static_cast<std::uint32_t>(severity));
}

EErrorSeverity TranslateSeverity(const std::string& name)
{
    return static_cast<EErrorSeverity>(FindRow(kSeverityNames, name)); // no row and eesUnknown are both -1
}

void DumpXMLSymbols()
{
    PrintAssigned("MODULE,%s\n", kModuleNames);
    PrintAssigned("SUBMODULE,%s\n", kSubModuleNames);
    PrintAssigned("PROBLEM,%s\n", kProblemNames);
    for (int type = 0; type < eptUnknown; ++type)
        std::printf("FMI,%d,%s \n", type, kProblemTypeNames[type]); // authors' tools split at the blank
}

} // namespace Faultkeeper
